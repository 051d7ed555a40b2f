// Carries GermanVersion.rc; it is read, never run.
int main() { return 0; }

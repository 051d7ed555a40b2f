// Reading this file top to bottom is reading what Setup does to a machine.
#include "InstallPlan.h"

#include "BrowserEntries.h"
#include "Certificate.h"
#include "Components.h"
#include "FilesInUse.h"
#include "Fonts.h"
#include "InstallCheck.h"
#include "InstallFolders.h"
#include "InstallLog.h"
#include "OEMEntries.h"
#include "PendingDeletions.h"
#include "PowerPointAddIn.h"
#include "ProductFiles.h"
#include "SelfDelete.h"
#include "UninstallEntry.h"
#include "UserAgent.h"
#include "WordMacros.h"
#include "WordWait.h"
#include "XmlNamespace.h"

namespace Zendra {

namespace {

using StepAction = bool (*)(CInstallContext&);

// What a failed install step means.
enum StepKind {
  skRequired,  // the install fails
  skIgnored,   // the install goes on
  skGate,      // the install ends here, neither succeeded nor failed
};

struct CInstallStep {
  // Logged as "Failure: <text>" when the step fails; null when the step
  // reports its own failure.
  const char* failureText;
  StepAction action;
  StepKind kind;
};

// clang-format off
const CInstallStep cInstallSteps[] = {
  {nullptr,                               CancelPendingDeletions,      skIgnored},
  {nullptr,                               DeleteProtocolHandlers,      skIgnored},
  {"Installation of Zendra fonts",        InstallFonts,                skRequired},
  {nullptr,                               EmptyInstallFolder,          skRequired},
  {nullptr,                               CreateInstallFolder,         skRequired},
  {"Unable to install files",             InstallComponentFiles,       skRequired},
  {"Unable to install speech rules",      InstallSpeechRules,          skRequired},
  {"Unable to install Office Support files", InstallOfficeSupportFiles, skRequired},
  {"Unable to install liblouis tables",   InstallLibLouisTables,       skRequired},
  {nullptr,                               InstallExtraFiles,           skRequired},
  {"Unable to add registry entries",      AddOEMEntries,               skRequired},
  {nullptr,                               RegisterComponents,          skRequired},
  {nullptr,                               WaitUntilWordIsClosed,       skGate},
  {"Unable to copy Word Macros",          InstallMSWordMacros,         skRequired},
  {"Unable to copy PowerPoint Macros",    InstallMSPowerPtAddIns,      skRequired},
  {nullptr,                               AddTrustedPublisherCertificate, skIgnored},
  {"Unable to add to IE PreApprovedList.", AddToPreApprovedList,       skRequired},
  {"Unable to add VersionCheck to priority elevation key.",
                                          AddVersionCheckElevation,    skRequired},
  {"Unable to add XMLNamespace.",         AddXmlNamespace,             skRequired},
  {"Unable to add Enterprise Mode.",      AddEnterpriseMode,           skRequired},
  {"Unable to add Compatibility Warning key.",
                                          AddCompatibilityWarningKey,  skRequired},
  {"Unable to RemoveFromAcceptedDocumentsXHTML.",
                                          RemoveFromAcceptedDocuments, skRequired},
  {"Unable to add uninstaller entries.",  AddUninstallEntry,           skRequired},
  {"Unable to add IE user agent entry.",  AddIEUserAgentToken,         skRequired},
  {"Unable to add IE9 user agent entry.", AddIE9UserAgentToken,        skRequired},
  {nullptr,                               DeleteOtherInstallFolders,   skIgnored},
};
// clang-format on

struct CRemovalStep {
  // Logged as "Failure: <text>" when the step fails; null when the step
  // reports its own failure.
  const char* failureText;
  StepAction action;
  bool counts;  // whether its failure makes the removal fail
};

// No step stops the removal: each undoes what it can.
// clang-format off
const CRemovalStep cRemovalSteps[] = {
  {"Unable to remove IE user agent entry.",  RemoveIEUserAgentToken,  true},
  {"Unable to remove IE9 user agent entry.", RemoveIE9UserAgentToken, true},
  {"Removing registry entries for uninstallation", RemoveUninstallEntry, true},
  {nullptr,                                  UnregisterComponents,    true},
  {"Unable to remove Word Macros",           RemoveMSWordMacros,      true},
  {"Unable to remove PowerPoint Macros",     RemoveMSPowerPtAddIns,   true},
  {"Removing XMLNamespace registry value.",  RemoveXmlNamespace,      true},
  {nullptr,                                  RemoveOEMEntries,        false},
  {nullptr,                                  DeleteInstalledFiles,    false},
  {nullptr,                                  DeleteOtherInstallFolders, false},
  {"Removing Setup",                         RemoveSetupProgram,      true},
};
// clang-format on

// A step's result, its failure logged with the row's text when it has one.
bool Reported(bool ok, const char* failureText) {
  return failureText ? LogStep(ok, failureText) : ok;
}

// The steps in order, until one that the install can't go on without fails.
InstallOutcome RunSteps(CInstallContext& context) {
  for (const CInstallStep& step : cInstallSteps) {
    const bool ok = Reported(step.action(context), step.failureText);
    if (ok || step.kind == skIgnored) continue;
    return step.kind == skGate ? ioNotFinished : ioFailed;
  }
  return ioSucceeded;
}

}  // namespace

InstallOutcome RunInstall(CInstallContext& context) {
  // Nothing is changed before these say that the install can go ahead.
  const bool refused = MimeFilterClashes() || !InstallCanFinish(context);
  const InstallOutcome outcome = refused ? ioNotFinished : RunSteps(context);
  // Files the checks claimed and the install did not write over or delete
  // stay as they are.
  if (context.installDirClaim) context.installDirClaim->Release();
  if (outcome == ioNotFinished && !refused) return outcome;
  LogText(outcome == ioSucceeded ? "Installation successful!\n"
                                 : "Installation failed!\n");
  return outcome;
}

bool RunRemoval(CInstallContext& context) {
  bool succeeded = true;
  for (const CRemovalStep& step : cRemovalSteps) {
    const bool ok = Reported(step.action(context), step.failureText);
    succeeded = (ok || !step.counts) && succeeded;
  }
  return succeeded;
}

}  // namespace Zendra

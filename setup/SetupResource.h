// Resource identifiers of Setup.exe, shared by the resource file and code.
#pragma once

#ifndef IDC_STATIC
#define IDC_STATIC (-1)
#endif

#define IDD_NOTIFY 2000
#define IDC_NOTIFY_TEXT 2001
#define IDC_NOTIFY_YES 2002
#define IDC_NOTIFY_NO 2003

#define IDD_CLOSE_WORD 2500

// String table: Word (273-277) and PowerPoint (517-521) display names.
#define IDS_WORD_2007 273
#define IDS_POWERPOINT_2007 517
// Per Word row r: message block 1088 + 8r, reasons 1168 + 8r + i, actions
// 1248 + 8r + i.
#define IDS_WORD_MESSAGE_BASE 1088
#define IDS_WORD_REASON_BASE 1168
#define IDS_WORD_ACTION_BASE 1248
#define IDS_BLOCK_STRIDE 8

// The product's signing certificate (DER), for the "TrustedPublisher" store.
#define IDR_PUBLISHER_CERT 3000

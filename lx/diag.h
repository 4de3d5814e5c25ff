// diag.h - the one message channel of the engine. Every failure is reported
// twice: by its return code, and in words by LX_Diag_Msg, whose last text a
// host reads with LX_Diag_GetLastMsg. LX_DEBUG in the environment traces
// every message to standard error.
#ifndef LX_DIAG_H
#define LX_DIAG_H

#include "lxbase.h"

void LX_Diag_Msg(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Test hook: forget the cached LX_DEBUG setting, so that it is read again
// at the next message.
void LX_Diag_ResetDebugSetting();

#endif

// diag.cpp - the last message of the process and the LX_DEBUG trace.
//
// State (process-wide, unprotected, like the rest of the engine's few
// globals): the buffer of the last message, which grows as needed and lives
// until the process ends, and the cached value of LX_DEBUG, -1 until the
// first message looks it up.
#include "diag.h"

#include <cstdarg>
#include <cstdlib>

#include "platform.h"

extern "C" LX_API const char LX_Version[] = "$Revision: 1.2 $";

namespace {
char *gLastMsg = nullptr;
size_t gLastMsgSize = 0;
int32_t gDebugSetting = -1;
} // namespace

void LX_Diag_Msg(const char *format, ...) {
    va_list args;
    va_start(args, format);
    int formatted = LX_VFormatGrow(&gLastMsg, &gLastMsgSize, format, args);
    va_end(args);

    if (gDebugSetting == -1) {
        const char *value = std::getenv("LX_DEBUG");
        gDebugSetting = value ? static_cast<int32_t>(std::atoi(value)) : 0;
    }
    if (gDebugSetting != 0 && formatted) LX_TraceLine("   LX_DEBUG: %s", gLastMsg);
}

void LX_Diag_ResetDebugSetting() { gDebugSetting = -1; }

extern "C" LX_API const char *LX_Diag_GetLastMsg(void) { return gLastMsg; }

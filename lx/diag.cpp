// diag.cpp - the last message and the LX_DEBUG trace.
//
// State: the buffer of the last message, one for each thread, so that a
// thread reads the message that its own last call left and a failure in
// one thread never moves the buffer that another is formatting into or
// reading. Each buffer grows as needed and is given back when its thread
// ends. Beside it, the cached value of LX_DEBUG, process-wide, -1 until
// the first message looks it up; it is an atomic, as threads may look it
// up at the same time (they all store the same value).
#include "diag.h"

#include <atomic>
#include <cstdarg>
#include <cstdlib>

#include "platform.h"

extern "C" LX_API const char LX_Version[] = "$Revision: 1.2 $";

namespace {

struct LastMsg {
    char *text = nullptr;
    size_t size = 0;
    LastMsg() = default;
    LastMsg(const LastMsg &) = delete;
    LastMsg &operator=(const LastMsg &) = delete;
    // Leaves the record empty, not dangling: a message written later in
    // the thread's exit (from a host's own exit handler) starts afresh.
    ~LastMsg() {
        std::free(text);
        text = nullptr;
        size = 0;
    }
};

thread_local LastMsg tLastMsg;
std::atomic<int32_t> gDebugSetting{-1};

} // namespace

void LX_Diag_Msg(const char *format, ...) {
    LastMsg &msg = tLastMsg;
    va_list args;
    va_start(args, format);
    int formatted = LX_VFormatGrow(&msg.text, &msg.size, format, args);
    va_end(args);

    int32_t setting = gDebugSetting.load(std::memory_order_relaxed);
    if (setting == -1) {
        const char *value = std::getenv("LX_DEBUG");
        setting = value ? static_cast<int32_t>(std::atoi(value)) : 0;
        gDebugSetting.store(setting, std::memory_order_relaxed);
    }
    if (setting != 0 && formatted) LX_TraceLine("   LX_DEBUG: %s", msg.text);
}

void LX_Diag_ResetDebugSetting() { gDebugSetting.store(-1, std::memory_order_relaxed); }

extern "C" LX_API const char *LX_Diag_GetLastMsg(void) { return tLastMsg.text; }

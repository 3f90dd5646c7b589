#pragma once

#include "host/Export.h"

#include <cstdint>
#include <functional>
#include <string>

class Operator;

/// Level of a message in the document's console.
using EventConsoleSubID = int32_t;

/// Notifications that a document knows.
enum DocNotification : int32_t {
    DocNotify_ControlsChanged = 5155, ///< the tool's controls are to be shown anew; the argument is 1
};

/// The host's document. The stand-alone host has one, which is there for its console, the notifications that
/// are sent to it and the divisor of its tools' frame rates.
class CorvexDoc {
public:
    /// Receives one message, formatted. Called on the thread that prints.
    using ConsoleHook = std::function<void(EventConsoleSubID level, const std::string& text)>;
    /// Receives one notification. Called on the thread that sends it.
    using NotifyHook = std::function<void(int32_t code, int32_t argument, Operator* tool)>;

    CorvexDoc(const CorvexDoc&) = delete;
    CorvexDoc& operator=(const CorvexDoc&) = delete;

    /// The document; never null, lives until the process ends.
    CORVEX_HOST_API static CorvexDoc* Get();

    /// Prints to the console, as `printf` does, with or without a document in hand: `doc->PrintF(60, text)`
    /// and `CorvexDoc::PrintF(60, text)` are the same. Without a hook the text goes to standard error. Any
    /// thread.
    CORVEX_HOST_API static void PrintF(EventConsoleSubID level, const char* format, ...)
        __attribute__((format(printf, 2, 3)));

    /// Sets who receives messages; an empty hook brings standard error back. Any thread; a message that
    /// another thread is printing may still go to the old hook.
    CORVEX_HOST_API static void SetConsoleHook(ConsoleHook hook);

    /// Sends the document a notification, a `DocNotification` as a rule, about `tool`, which may be null.
    /// Without a hook nothing happens. Any thread.
    CORVEX_HOST_API void Notify(int32_t code, int32_t argument, Operator* tool);
    /// Sets who receives notifications; an empty hook ends that. Any thread; a notification that another
    /// thread is sending may still go to the old hook.
    CORVEX_HOST_API void SetNotifyHook(NotifyHook hook);

    /// What the frame rate of a saver tool in this document is divided by; 0, which is the default, stands
    /// for none. Any thread.
    CORVEX_HOST_API int32_t GetFrameRateDivisor() const;
    /// Sets the divisor, which any number may be. Any thread.
    CORVEX_HOST_API void SetFrameRateDivisor(int32_t divisor);

private:
    CorvexDoc() = default;
};

#pragma once

#include "host/Export.h"

#include <cstdint>
#include <functional>
#include <string>

/// Level of a message in the document's console.
using EventConsoleSubID = int32_t;

/// The host's document. The stand-alone host has one, which is there for its console.
class CorvexDoc {
public:
    /// Receives one message, formatted. Called on the thread that prints.
    using ConsoleHook = std::function<void(EventConsoleSubID level, const std::string& text)>;

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

private:
    CorvexDoc() = default;
};

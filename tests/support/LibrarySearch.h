#pragma once

#ifdef __has_feature
#if __has_feature(thread_sanitizer)
#define CORVEX_PROGRAM_OPENS_LIBRARIES true
#endif
#endif
#ifndef CORVEX_PROGRAM_OPENS_LIBRARIES
#define CORVEX_PROGRAM_OPENS_LIBRARIES false
#endif

/// Whether a library that asks for another gets it from the program, which knows where the build has them
/// all: Clang's ThreadSanitizer is part of the program and opens every library. Nothing can be nowhere then.
constexpr bool programOpensLibraries = CORVEX_PROGRAM_OPENS_LIBRARIES;

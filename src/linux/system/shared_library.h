/// Other people's libraries that only some commands need.
#pragma once

#include "platform/phrase.h"

#include <optional>
#include <type_traits>

namespace pedvar {

/// A library that is loaded when the program gets to need it, so that commands that do not need it start without.
/// It stays loaded until the process ends. Its functions have the types that its headers declare:
///
///     SharedLibrary library{"libcurl.so.4", "libcurl4"};
///     decltype(&::curl_easy_init) easyInit = library.function("curl_easy_init");
///     if (library.problem()) ...
class SharedLibrary {
public:
    /// A function before its type is known; null when the library has no such function.
    class Function {
    public:
        explicit Function(void* address) : address_(address) {}

        template <class Pointer>
            requires std::is_function_v<std::remove_pointer_t<Pointer>>
        operator Pointer() const {
            return reinterpret_cast<Pointer>(address_);
        }

    private:
        void* address_;
    };

    /// `package` is the one of Debian's that a person installs to have `file`.
    SharedLibrary(const char* file, const char* package);

    Function function(const char* name);

    /// The first thing that was found missing, for people. Without any, all functions asked for are there.
    const std::optional<Phrase>& problem() const { return problem_; }

private:
    void* handle_;
    const char* file_;
    const char* package_;
    std::optional<Phrase> problem_;
};

}  // namespace pedvar

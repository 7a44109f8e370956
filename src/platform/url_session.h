/// Documents of the web.
#pragma once

#include "core/date.h"
#include "platform/phrase.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <string>

namespace pedvar {

/// What to fetch, and when to give up.
struct URLRequest {
    std::string address;
    Seconds longestTime{15};                  // from the call to the last byte
    std::size_t largestBody = 1'024 * 1'024;  // bytes
};

struct URLResponse {
    int statusCode = 0;
    std::string body;
};

/// Why there is no answer, for people.
struct URLError {
    Phrase localizedDescription;
};

/// Called once, from any thread.
using URLHandler = std::move_only_function<void(std::expected<URLResponse, URLError>)>;

class URLSession {
public:
    virtual ~URLSession() = default;

    /// Asks for the document, redirects followed. An answer of any status is a response.
    virtual void data(URLRequest request, URLHandler completion) = 0;
};

}  // namespace pedvar

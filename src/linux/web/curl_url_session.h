/// Documents of the web through libcurl.
#pragma once

#include "platform/url_session.h"

#include <memory>

namespace pedvar {

/// Fetches over HTTP and HTTPS, each document on a thread of its own. A redirect may lead from HTTP to HTTPS and
/// not back. Destroying the session ends what is under way; that is answered as failed.
class CurlURLSession : public URLSession {
public:
    CurlURLSession();
    ~CurlURLSession() override;

    void data(URLRequest request, URLHandler completion) override;

private:
    struct Fetches;
    std::unique_ptr<Fetches> fetches_;
};

}  // namespace pedvar

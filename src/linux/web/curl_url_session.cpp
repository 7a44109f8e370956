#include "linux/web/curl_url_session.h"

#include "linux/system/shared_library.h"

#include <curl/curl.h>
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <stop_token>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace pedvar {

namespace {

constexpr long mostRedirects = 5;
constexpr int longestNap = 60'000;  // milliseconds; news of the transfer and of a stop end it before
constexpr const char* agent = "Pedvar";

/// What is used of libcurl.
struct Curl {
    SharedLibrary library{"libcurl.so.4", "libcurl4"};
    decltype(&::curl_global_init) globalInit = library.function("curl_global_init");
    decltype(&::curl_easy_init) easyInit = library.function("curl_easy_init");
    decltype(&::curl_easy_setopt) setOption = library.function("curl_easy_setopt");
    decltype(&::curl_easy_getinfo) information = library.function("curl_easy_getinfo");
    decltype(&::curl_easy_strerror) describe = library.function("curl_easy_strerror");
    decltype(&::curl_easy_cleanup) easyCleanup = library.function("curl_easy_cleanup");
    decltype(&::curl_multi_init) multiInit = library.function("curl_multi_init");
    decltype(&::curl_multi_add_handle) add = library.function("curl_multi_add_handle");
    decltype(&::curl_multi_perform) perform = library.function("curl_multi_perform");
    decltype(&::curl_multi_poll) poll = library.function("curl_multi_poll");
    decltype(&::curl_multi_wakeup) wakeUp = library.function("curl_multi_wakeup");
    decltype(&::curl_multi_info_read) readInformation = library.function("curl_multi_info_read");
    decltype(&::curl_multi_remove_handle) remove = library.function("curl_multi_remove_handle");
    decltype(&::curl_multi_cleanup) multiCleanup = library.function("curl_multi_cleanup");
};

const Curl& curl() {
    static const Curl loaded = [] {
        Curl library;
        if (!library.library.problem()) library.globalInit(CURL_GLOBAL_DEFAULT);
        return library;
    }();
    return loaded;
}

using Outcome = std::expected<URLResponse, URLError>;

std::unexpected<URLError> failure(Phrase message) {
    return std::unexpected(URLError{std::move(message)});
}

/// One document on its way.
class Transfer {
public:
    explicit Transfer(URLRequest request)
        : request_(std::move(request)),
          easy_(curl().easyInit(), curl().easyCleanup),
          multi_(curl().multiInit(), curl().multiCleanup) {}

    Outcome run(const std::stop_token& stop) {
        if (!easy_ || !multi_) return failure(Phrase("There is no memory to fetch with."));
        if (!prepare()) return failure(Phrase("\"{}\" cannot be asked for.", {request_.address}));
        curl().add(multi_.get(), easy_.get());
        const std::stop_callback wake(stop, [this] { curl().wakeUp(multi_.get()); });
        int running = 1;
        while (running > 0 && !stop.stop_requested()) {
            if (curl().perform(multi_.get(), &running) != CURLM_OK) break;
            if (running > 0) curl().poll(multi_.get(), nullptr, 0, longestNap, nullptr);
        }
        int left = 0;
        const CURLMsg* const message = curl().readInformation(multi_.get(), &left);
        const auto result = message ? std::optional(message->data.result) : std::nullopt;
        long status = 0;
        curl().information(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
        curl().remove(multi_.get(), easy_.get());
        if (!result) return failure(Phrase("The request was broken off."));
        if (isTooLong_ || *result == CURLE_FILESIZE_EXCEEDED) {
            return failure(Phrase("The answer is longer than {} bytes.", {std::to_string(request_.largestBody)}));
        }
        if (*result == CURLE_OPERATION_TIMEDOUT) {
            return failure(Phrase("There is no whole answer after {} seconds.",
                                  {fmt::format("{:g}", request_.longestTime.count())}));
        }
        if (*result != CURLE_OK) return failure(describe(*result));
        return URLResponse{static_cast<int>(status), std::move(body_)};
    }

private:
    bool prepare() {
        using std::chrono::ceil;
        using std::chrono::milliseconds;
        const bool isSecure = request_.address.starts_with("https:");
        const auto longest = std::max<long>(1, ceil<milliseconds>(request_.longestTime).count());
        return set(CURLOPT_URL, request_.address.c_str()) && set(CURLOPT_USERAGENT, agent) &&
               set(CURLOPT_PROTOCOLS_STR, "http,https") &&
               set(CURLOPT_REDIR_PROTOCOLS_STR, isSecure ? "https" : "http,https") &&
               set(CURLOPT_FOLLOWLOCATION, 1L) && set(CURLOPT_MAXREDIRS, mostRedirects) &&
               set(CURLOPT_ACCEPT_ENCODING, "") && set(CURLOPT_NOSIGNAL, 1L) && set(CURLOPT_TIMEOUT_MS, longest) &&
               set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request_.largestBody)) &&
               set(CURLOPT_ERRORBUFFER, reason_) && set(CURLOPT_WRITEDATA, this) &&
               set(CURLOPT_WRITEFUNCTION, &Transfer::take);
    }
    template <class Value>
    bool set(CURLoption option, Value value) {
        return curl().setOption(easy_.get(), option, value) == CURLE_OK;
    }

    /// Takes what has come, unless that is too much: then it takes nothing, which ends the transfer.
    static std::size_t take(const char* bytes, std::size_t size, std::size_t count, void* self) {
        Transfer& transfer = *static_cast<Transfer*>(self);
        const std::size_t length = size * count;
        transfer.isTooLong_ = transfer.body_.size() + length > transfer.request_.largestBody;
        if (transfer.isTooLong_) return 0;
        transfer.body_.append(bytes, length);
        return length;
    }

    std::string describe(CURLcode result) const { return *reason_ ? reason_ : curl().describe(result); }

    URLRequest request_;
    std::string body_;
    bool isTooLong_ = false;
    char reason_[CURL_ERROR_SIZE] = {};
    std::unique_ptr<CURL, decltype(&::curl_easy_cleanup)> easy_;
    std::unique_ptr<CURLM, decltype(&::curl_multi_cleanup)> multi_;
};

}  // namespace

/// The threads that fetch; each ends with its document.
struct CurlURLSession::Fetches {
    struct Fetch {
        std::atomic<bool> isFinished = false;
        std::jthread thread;  // last: it uses what stands above
    };
    std::vector<std::unique_ptr<Fetch>> running;
};

CurlURLSession::CurlURLSession() : fetches_(std::make_unique<Fetches>()) {}

CurlURLSession::~CurlURLSession() {
    for (const auto& fetch : fetches_->running) fetch->thread.request_stop();
}

void CurlURLSession::data(URLRequest request, URLHandler completion) {
    if (const auto& problem = curl().library.problem()) {
        completion(failure(*problem));
        return;
    }
    std::erase_if(fetches_->running, [](const auto& fetch) { return fetch->isFinished.load(); });
    auto fetch = std::make_unique<Fetches::Fetch>();
    fetch->thread = std::jthread([&isFinished = fetch->isFinished, request = std::move(request),
                                  completion = std::move(completion)](const std::stop_token& stop) mutable {
        completion(Transfer(std::move(request)).run(stop));
        isFinished = true;
    });
    fetches_->running.push_back(std::move(fetch));
}

}  // namespace pedvar

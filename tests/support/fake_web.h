/// The web, made by hand.
#pragma once

#include "platform/url_session.h"
#include "platform/web_pages.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace pedvar {

/// Answers from a queue, or keeps who asks waiting while it is empty.
class FakeURLSession : public URLSession {
public:
    std::vector<std::string> asked;  // addresses
    std::deque<std::expected<URLResponse, URLError>> answers;

    void data(URLRequest request, URLHandler completion) override {
        asked.push_back(std::move(request.address));
        waiting_.push_back(std::move(completion));
        answer();
    }
    void answer() {
        while (!answers.empty() && !waiting_.empty()) {
            waiting_.front()(std::move(answers.front()));
            waiting_.pop_front();
            answers.pop_front();
        }
    }

private:
    std::deque<URLHandler> waiting_;
};

class FakeWebPages : public WebPages {
public:
    std::vector<std::string> opened;

    bool open(const std::string& address) override {
        opened.push_back(address);
        return true;
    }
};

}  // namespace pedvar

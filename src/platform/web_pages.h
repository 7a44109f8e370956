/// Pages that the person looks at elsewhere.
#pragma once

#include <string>

namespace pedvar {

class WebPages {
public:
    virtual ~WebPages() = default;

    /// Shows the page in the person's browser. False when there is none.
    virtual bool open(const std::string& address) = 0;
};

}  // namespace pedvar

/// Pages in the desktop's browser.
#pragma once

#include "platform/web_pages.h"

namespace pedvar {

/// Leaves the choice of the browser to xdg-open, and does not wait for it.
class DesktopPages : public WebPages {
public:
    bool open(const std::string& address) override;
};

}  // namespace pedvar

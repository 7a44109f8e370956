/// Where Pedvar is published.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace pedvar {

/// Addresses of the place that publishes Pedvar; an empty one means that it has no such thing.
struct StoreAddresses {
    std::string lookup;  // answers which version is the newest
    std::string page;    // what the identifier is put behind to get the application's page
    std::string review;  // the page on which the application is rated
};

/// Asked each time, since a person may change them.
using StoreAddressSource = std::function<StoreAddresses()>;

/// `address` with "name=value" as the last part of its query. Both are of letters, digits and hyphens.
std::string withQuery(std::string_view address, std::string_view name, std::string_view value);

}  // namespace pedvar

#include "linux/system/nlohmann_json_parser.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <optional>
#include <utility>

namespace pedvar {

namespace {

constexpr std::size_t deepestNesting = 256;  // levels; a tree is destroyed by recursion

/// Where the nesting gets too deep, in bytes. Looks at brackets outside of texts only, whatever else is wrong.
std::optional<std::size_t> tooDeepAt(std::string_view text) {
    std::size_t depth = 0;
    bool isInText = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') isInText = !isInText;
        if (isInText) {
            if (c == '\\') ++at;
        } else if (c == '[' || c == '{') {
            if (++depth > deepestNesting) return at;
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return std::nullopt;
}

/// Builds the tree as the document is read. The pointers to open containers stay valid: a container grows only
/// while it is the innermost.
class TreeBuilder : public nlohmann::json_sax<nlohmann::json> {
public:
    JsonValue root;
    std::string fault;

    bool null() override { return add({nullptr}); }
    bool boolean(bool value) override { return add({value}); }
    bool number_integer(number_integer_t value) override { return add({value}); }
    bool number_unsigned(number_unsigned_t value) override {
        if (std::in_range<std::int64_t>(value)) return add({static_cast<std::int64_t>(value)});
        return add({static_cast<double>(value)});
    }
    bool number_float(number_float_t value, const string_t&) override { return add({value}); }
    bool string(string_t& value) override { return add({std::move(value)}); }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override { return open({JsonObject{}}); }
    bool key(string_t& name) override {
        std::get<JsonObject>(open_.back()->value).emplace_back(std::move(name), JsonValue{});
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open({JsonArray{}}); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& error) override {
        // The library's own name and number of the error stand in brackets before the text for people.
        const std::string_view text = error.what();
        fault = fmt::format("byte {}: {}", position, text.substr(text.find(']') + 2));
        return false;
    }

private:
    JsonValue& place(JsonValue value) {
        if (open_.empty()) return root = std::move(value);
        if (auto* array = std::get_if<JsonArray>(&open_.back()->value))
            return array->emplace_back(std::move(value));
        return std::get<JsonObject>(open_.back()->value).back().second = std::move(value);
    }
    bool add(JsonValue value) {
        place(std::move(value));
        return true;
    }
    bool open(JsonValue container) {
        open_.push_back(&place(std::move(container)));
        return true;
    }
    bool close() {
        open_.pop_back();
        return true;
    }

    std::vector<JsonValue*> open_;
};

}  // namespace

std::expected<JsonValue, std::string> NlohmannJsonParser::parse(std::string_view text) const {
    if (const auto at = tooDeepAt(text)) {
        return std::unexpected(fmt::format("byte {}: nested deeper than {} levels", *at + 1, deepestNesting));
    }
    TreeBuilder builder;
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &builder)) return std::unexpected(builder.fault);
    return std::move(builder.root);
}

}  // namespace pedvar

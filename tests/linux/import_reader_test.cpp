/// The reader of export documents, held against Expat where that can read them.
#include "linux/import_traces.h"

#include <doctest/doctest.h>

#include <fmt/format.h>

#include <random>
#include <vector>

using namespace pedvar;

namespace {

struct Reading {
    std::string trace;
    int malformed = 0;
    bool endedEarly = false;
    std::uint64_t repaired = 0;
    bool operator==(const Reading&) const = default;
};

/// None when the document has no root element.
std::optional<Reading> reading(std::string_view document, std::size_t piece = 1 << 16) {
    TextSource source(document, piece);
    Trace trace;
    const auto outcome = readExport(source, trace);
    if (!outcome) return std::nullopt;
    return Reading{trace.text, trace.malformed, outcome->end == ReadOutcome::End::early, outcome->repairedBytes};
}

/// The trace of `content` inside the root element, which is left out.
Reading inside(std::string_view content) {
    auto found = reading(fmt::format("<HealthData>{}</HealthData>", content));
    REQUIRE(found);
    const std::string_view root = "<HealthData>\n", end = "</HealthData>\n";
    if (found->trace.ends_with(end)) found->trace.resize(found->trace.size() - end.size());
    REQUIRE(found->trace.starts_with(root));
    found->trace.erase(0, root.size());
    return *found;
}

/// Makes well-formed documents that use what XML allows and no phone writes.
class OddDocuments {
public:
    explicit OddDocuments(unsigned seed) : random_(seed) {}

    std::string document() {
        std::string text = pick({"", "\xEF\xBB\xBF"}) + pick({"", "<?xml version=\"1.0\" encoding='UTF-8'?>\r\n"});
        text += pick({"", "<!-- <HealthData> -->", "<?pi <HealthData> ?>\n"});
        text += pick({"", "<!DOCTYPE HealthData>", "<!DOCTYPE HealthData SYSTEM 'it>s'>",
                      "<!DOCTYPE HealthData [\n<!-- it's ]> <HealthData> -->\n<!ELEMENT Record EMPTY>\n"
                      "<!ENTITY e \"<HealthData>]>\"><?x ']>?>\n]>"});
        text += fmt::format("{}<HealthData{}>{}</HealthData{}>", space(), attributes(), content(0),
                            pick({"", " ", "\n"}));
        return text + pick({"", "\n", "<!-- after -->\n", "<?after all?>"});
    }

private:
    std::string pick(std::vector<std::string> choices) { return choices[random_() % choices.size()]; }
    std::string space() { return pick({" ", "\n", "\t", "\r\n", "  "}); }

    std::string value(char quote) {
        std::string text;
        for (auto count = random_() % 6; count > 0; --count) {
            text += pick({"plain text", "2024-05-01 06:30:00 +0200", "&lt;", "&amp;", "&#65;", "&#x1F600;",
                          "&#13;&#10;", "\r\n", "\t", "\r", "é’\xC2\xA0", "😀", ">", "/>", "", "=", "&quot;",
                          "&apos;", quote == '"' ? "'" : "\""});
        }
        return text;
    }

    std::string attributes() {
        std::string text;
        const std::vector<std::string> names{"type", "unit", "_a", "a:b", "x-1.2", "größe", "sourceName"};
        for (const std::string& name : names) {
            if (random_() % 3 != 0) continue;
            const char quote = random_() % 2 == 0 ? '"' : '\'';
            text += fmt::format("{}{}{}={}{}{}{}", space(), name, pick({"", " "}), pick({"", "\n"}), quote,
                                value(quote), quote);
        }
        return text + pick({"", space()});
    }

    std::string content(int depth) {
        std::string text;
        for (auto count = random_() % 5; count > 0; --count) {
            const std::string name = pick({"Record", "MetadataEntry", "Wörkout", "R", "Record.1"});
            text += pick({"\n ", "text &amp; ]] > text", "<!---->", "<!-- <Record a='> - -->",
                          "<![CDATA[<Record ]] > ]]]>", "<?p > \" ?>", ""});
            if (depth < 4 && random_() % 2 == 0) {
                text +=
                    fmt::format("<{}{}>{}</{}{}>", name, attributes(), content(depth + 1), name, pick({"", "\t"}));
            } else {
                text += fmt::format("<{}{}/>", name, attributes());
            }
        }
        return text;
    }

    std::mt19937 random_;
};

void mutate(std::string& document, std::mt19937& random) {
    const std::size_t position = random() % document.size();
    constexpr std::string_view bytes = "<>&;\"'=/!?-[] \t\r\n#x0aA\x0B\xC3\xA9\xFF";
    switch (random() % 3) {
        case 0:
            document[position] = bytes[random() % bytes.size()];
            break;
        case 1:
            document.erase(position, 1 + random() % 3);
            break;
        default:
            document.insert(position, document.substr(random() % document.size(), random() % 12));
    }
}

}  // namespace

TEST_CASE("every well-formed document reads as Expat reads it, in windows of any size") {
    for (unsigned seed = 0; seed < 150; ++seed) {
        const std::string document = OddDocuments(seed).document();
        CAPTURE(document);
        const auto expected = traceByExpat(document);
        REQUIRE(expected);
        for (const std::size_t piece : {1U, 7U, 65536U}) {
            const auto found = reading(document, piece);
            REQUIRE(found);
            CHECK(found->trace == *expected);
            CHECK(found->malformed == 0);
            CHECK(!found->endedEarly);
            CHECK(found->repaired == 0);
        }
    }
}

TEST_CASE(
    "what Expat still accepts of damaged documents reads the same, the rest reads to its end in any windows") {
    std::mt19937 random(7);
    int accepted = 0;
    for (unsigned seed = 0; seed < 2500; ++seed) {
        std::string document = OddDocuments(seed % 100).document();
        for (auto count = 1 + random() % 3; count > 0; --count) mutate(document, random);
        CAPTURE(document);
        const auto found = reading(document);
        if (seed % 8 == 0) CHECK(found == reading(document, 3));
        // With an external document type Expat believes that entities may be declared there.
        const auto expected = document.find("SYSTEM") == std::string::npos ? traceByExpat(document) : std::nullopt;
        if (!expected || (!expected->starts_with("<HealthData>") && !expected->starts_with("<HealthData ")))
            continue;
        ++accepted;
        REQUIRE(found);
        CHECK(found->trace == *expected);
        CHECK(found->malformed == 0);
    }
    CHECK(accepted > 300);
}

TEST_CASE("a broken document type costs nothing behind it") {
    for (const std::string_view type : {
             "<!DOCTYPE HealthData [\n<!ATTLIST VisionPrescription\n  type CDATA #REQUIRED\n<!ELEMENT x\n  stray "
             "line\n]>",
             "<!DOCTYPE HealthData [ <!ENTITY a \"it's >]>",
             "<!DOCTYPE HealthData [\n<!ATTLIST Record\n",
             "<!DOCTYPE HealthData [ <!-- never closed ]>",
             "stray text",
         }) {
        CAPTURE(type);
        const auto found = reading(
            fmt::format("<?xml version='1.0'?>{}\n<HealthData><Record name=\"Anna's\"/></HealthData>", type));
        REQUIRE(found);
        CHECK(*found == Reading{.trace = "<HealthData>\n<Record name=Anna's>\n</Record>\n</HealthData>\n"});
    }
    CHECK(!reading("<HealthDataset></HealthDataset>"));
    CHECK(!reading(""));
}

TEST_CASE("malformed markup is counted and passed over, and what follows is read") {
    struct Case {
        std::string_view content;
        int malformed;
        std::string_view trace = "<R>\n</R>\n";
    };
    for (const Case& each : std::vector<Case>{
             {"<a b='1' b='2'/><R/>", 1},                         // an attribute twice
             {"<a b=1/><R/>", 1},                                 // no quotes
             {"<a b='1'c='2'/><R/>", 1},                          // no blank between
             {"<a some key='1'/><R/>", 1},                        // a blank in the name
             {"<a b='<R/>'/><R/>", 1, "<R>\n</R>\n<R>\n</R>\n"},  // '<' in a value: what follows it may be a tag
             {"<a b='&nbsp;'/><R/>", 1},                          // an entity that XML does not define
             {"<a b='&#0;'/><a b='&#xD800;'/><a b='&#x110000;'/><a b='&#;'/><a b='& '/><R/>", 5},
             {"<1a/><R/>", 1},
             {"< R/><R/>", 1},
             {"<!ENTITY x><R/>", 1},
             {"<a / ><R/>", 1},
             {"</R a='1'><R/>", 1},
             {"</R><R/>", 1},       // never opened
             {"<a b></a><R/>", 1},  // its end tag is no second fault
             {"<a><R/></b></a>", 1, "<a>\n<R>\n</R>\n</a>\n"},
             {"<a><b><R/></a>", 1, "<a>\n<b>\n<R>\n</R>\n</b>\n</a>\n"},  // an end tag further out closes both
         }) {
        CAPTURE(each.content);
        const Reading found = inside(each.content);
        CHECK(found.malformed == each.malformed);
        CHECK(found.trace == each.trace);
        CHECK(!found.endedEarly);
    }
    // 40 attributes are too many to compare each with each, and still compared.
    std::string many;
    for (int i = 0; i < 40; ++i) many += fmt::format(" a{}='1'", i);
    CHECK(inside(fmt::format("<R{}/>", many)).malformed == 0);
    CHECK(inside(fmt::format("<R{} a7='1'/>", many)).malformed == 1);
}

TEST_CASE("what follows the root element is read and said once") {
    const auto found = reading("<HealthData><a/></HealthData><R/><R/><HealthData><b/></HealthData>");
    REQUIRE(found);
    CHECK(found->malformed == 1);
    CHECK(!found->endedEarly);
    CHECK(found->trace.find("<b>") != std::string::npos);
}

TEST_CASE("a document that breaks off ends early wherever it does, with all that was whole") {
    const std::string document = "<HealthData><R a='1'/><!-- c --><b><![CDATA[x]]></b></HealthData>";
    for (std::size_t length = 12; length < document.size(); ++length) {
        const auto found = reading(document.substr(0, length));
        REQUIRE(found);
        CAPTURE(length);
        CHECK(found->endedEarly);
        CHECK((found->trace.find("</R>") != std::string::npos) == (length >= 22));
        CHECK(found->trace.find("</HealthData>") == std::string::npos);
    }
}

TEST_CASE("control bytes are dropped and bytes that are not UTF-8 replaced, each counted, across windows too") {
    const std::string_view replacement = "\xEF\xBF\xBD";
    struct Case {
        std::string bytes;
        std::string text;
        std::uint64_t repaired;
    };
    const auto twice = fmt::format("{0}{0}", replacement);
    for (const Case& each : std::vector<Case>{
             {"a\x0B"
              "b\x01",
              "ab", 2},
             {std::string("a\0b", 3), "ab", 1},
             {"\x7F\xC2\x80", "\x7F\xC2\x80", 0},
             {"\xFF", std::string(replacement), 1},
             {"\xE2\x82", twice, 2},                                        // cut off
             {"\xC0\xAF", twice, 2},                                        // longer than needed
             {"\xED\xA0\x80", fmt::format("{}{}", twice, replacement), 3},  // a surrogate
             {"\xF4\x90\x80\x80", fmt::format("{0}{0}", twice), 4},         // beyond Unicode
             {"\xEF\xBF\xBF", fmt::format("{}{}", twice, replacement), 3},  // no character of XML
             {"\xE2\x82\xAC\xF0\x9F\x98\x80", "€😀", 0},
         }) {
        // Behind a block's worth of clean text, and in front of one.
        const std::string clean(70, '.');
        const std::string document = fmt::format("<HealthData a='{0}{1}{0}'></HealthData>", clean, each.bytes);
        for (const std::size_t piece : {1U, 2U, 7U, 65536U}) {
            const auto found = reading(document, piece);
            REQUIRE(found);
            CAPTURE(document);
            CHECK(found->trace == fmt::format("<HealthData a={0}{1}{0}>\n</HealthData>\n", clean, each.text));
            CHECK(found->repaired == each.repaired);
        }
    }
    CHECK(reading("<HealthData></HealthData>\xE2\x82")->repaired == 2);  // cut off by the end of the file
}

TEST_CASE("a tag of any length is read whole or passed over, and a document of nothing but depth is survived") {
    const std::string long_(3'000'000, 'x');
    CHECK(inside(fmt::format("<R a='{}'/>", long_)).trace.size() > long_.size());
    const std::string endless(17 * 1024 * 1024, 'x');
    CHECK(inside(fmt::format("<a b='{}'/><R/>", endless)).malformed == 1);

    std::string deep = "<HealthData>";
    for (int i = 0; i < 300'000; ++i) deep += "<abcdef>";
    const auto found = reading(deep);
    REQUIRE(found);
    CHECK(found->endedEarly);
    CHECK(found->malformed > 0);
}

#!/usr/bin/env python3
"""The texts that translators work on.

    tools/i18n.py update    make po/pedvar.pot from the sources, and bring each po/*.po up to it
    tools/i18n.py check     say what is stale, missing or wrong in po/, and which texts are not looked up

xgettext finds a text where it stands as a literal in a call that looks it up, or that hands it on to be looked up. It
does not know C++ well, so the sources are simplified for it first. Tables of texts stand between the comments
"i18n: texts" and "i18n: end"; there every literal counts that has a capital at its beginning or a blank in it, or with
"i18n: texts like REGEX" every one that matches. Texts that the sources do not hold, those of the system and of health
exports, are listed in po/further_texts.
"""
import ast
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PO = ROOT / "po"
TEMPLATE = PO / "pedvar.pot"

KEYWORDS = ["text", "text_", "lookUp", "Phrase", "usageError", "plural:1,2", "command:2", "add_option:3", "add_flag:3",
            "add_flag_callback:3", "action:3", "set_help_flag:2", "set_version_flag:3", "app", "type_name"]

LITERAL = r'"(?:[^"\\\n]|\\.)*"'
# Literals that stand beside each other are one text.
TEXT = rf"{LITERAL}(?:\s*{LITERAL})*"

HEADER = '''msgid ""
msgstr ""
"Project-Id-Version: pedvar\\n"
"MIME-Version: 1.0\\n"
"Content-Type: text/plain; charset=UTF-8\\n"
"Content-Transfer-Encoding: 8bit\\n"
"Plural-Forms: nplurals=INTEGER; plural=EXPRESSION;\\n"

'''

ROOMS_WITH_TEXTS = ("src/apps/", "src/achievements/", "src/engagement/", "src/hydration/", "src/insights/", "src/recording/")

# Sentences in these calls are for developers and logs, or are the names of things in documents.
NOT_FOR_PEOPLE = re.compile(
    r"(?:around|check|static_assert|say|complain|log|logOnce|query|run|runScript|number|parse|faultPoint)\($"
    r"|\bcheck\([^;]*, $|\b(?:say|log)\([^;]*\bLogLevel::[^;]*$")


def sources():
    files = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "src"], cwd=ROOT, check=True,
                           capture_output=True, text=True).stdout.split()
    return [path for path in sorted(files) if path.endswith((".cpp", ".h")) and (ROOT / path).exists()]


def mark_tables(source):
    """Wraps the literals of tables into text()."""
    def mark(match):
        like = re.compile(match["like"].strip() if match["like"] else r"[A-Z].*[a-z]|.* ")

        def wrap(literal):
            return f"text({literal[0]})" if like.match(ast.literal_eval(literal[0])) else literal[0]
        return re.sub(LITERAL, wrap, match["body"])
    return re.sub(r"// i18n: texts(?: like (?P<like>[^\n]*))?\n(?P<body>.*?)// i18n: end", mark, source, flags=re.S)


def simplified(source):
    source = mark_tables(source)
    source = re.sub(r"(^|\s)//.*", r"\1", source, flags=re.M)
    source = source.replace("suite_.text(", "value(").replace("text()(", "text(").replace("Phrase{", "Phrase(")
    source = re.sub(r"\bcommand<\w+>\(", "command(", source)
    source = re.sub(r"\bPhrase \w+[{(]", "Phrase(", source)
    return re.sub(r'\badd_option\(\s*("[A-Z]+")', r"text(\1), add_option(\1", source)


def template():
    with tempfile.TemporaryDirectory() as folder:
        further = "".join(f"text({quoted(line)});\n" for line in further_texts())
        pathlib.Path(folder, "further.cpp").write_text(further)
        for path in sources():
            copy = pathlib.Path(folder, path)
            copy.parent.mkdir(parents=True, exist_ok=True)
            copy.write_text(simplified((ROOT / path).read_text()))
        words = [f"--keyword={keyword}" for keyword in KEYWORDS]
        subprocess.run(["xgettext", "--language=C++", "--from-code=UTF-8", "--keyword", *words, "--no-location",
                        "--sort-output", "--no-wrap", "--output=found.pot", "further.cpp", *sources()],
                       cwd=folder, check=True, stderr=subprocess.DEVNULL)
        found = pathlib.Path(folder, "found.pot").read_text()
    # Without the header, which has the time in it, and without guesses at formats of other languages.
    return HEADER + re.sub(r"^#, .*\n", "", found[found.index("\n\n") + 2:], flags=re.M)


def further_texts():
    lines = (PO / "further_texts").read_text().splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def entries(path):
    """The messages of a catalogue as dictionaries of their fields; "flags" is what stands in "#,"."""
    plain = subprocess.run(["msgcat", "--no-wrap", str(path)], check=True, capture_output=True, text=True).stdout
    for block in plain.split("\n\n"):
        entry = {"flags": "", "line": block}
        field = None
        for line in block.splitlines():
            if line.startswith("#,"):
                entry["flags"] += line
            elif match := re.match(r'(msg\w+(?:\[\d\])?) (".*")$', line):
                field = match[1]
                entry[field] = ast.literal_eval(match[2])
            elif line.startswith('"') and field:
                entry[field] += ast.literal_eval(line)
        if entry.get("msgid"):
            yield entry


def places(text):
    """The places of a text as sorted numbers; {fmt} numbers those without a number from 0."""
    found, following = [], 0
    for number in re.findall(r"\{(\d*)[^{}]*\}", text):
        found.append(int(number) if number else following)
        following += 0 if number else 1
    return sorted(set(found))


def edges(text):
    return re.match(r"\s*", text)[0], re.search(r"\s*$", text)[0]


def faults(entry):
    original = entry.get("msgid_plural", entry["msgid"])
    if "fuzzy" in entry["flags"]:
        yield "is fuzzy"
    for field, translation in entry.items():
        if not field.startswith("msgstr"):
            continue
        if not translation:
            yield "is not translated"
            return
        # The form for one may do without the number.
        mayLack = field == "msgstr[0]" and len(places(original)) == 1
        if places(translation) != places(original) and not (mayLack and not places(translation)):
            yield "has other places than the original"
        if edges(translation) != edges(original):
            yield "begins or ends with other blanks than the original"


def check_catalogue(path):
    problems = []
    for entry in entries(path):
        for fault in faults(entry):
            problems.append(f'{path.relative_to(ROOT)}: {quoted(entry["msgid"])} {fault}')
    known = {entry["msgid"] for entry in entries(path)}
    for entry in entries(TEMPLATE):
        if entry["msgid"] not in known:
            problems.append(f'{path.relative_to(ROOT)}: {quoted(entry["msgid"])} is missing')
    formal = subprocess.run(["msgfmt", "--check", "--output-file=/dev/null", str(path)], capture_output=True, text=True)
    if formal.returncode != 0:
        problems.append(formal.stderr.strip())
    return problems


def stray_texts():
    """Sentences that no look-up finds, in the code of commands and in the tables of the rooms that have some."""
    known = {entry["msgid"] for entry in entries(TEMPLATE)} | {
        entry["msgid_plural"] for entry in entries(TEMPLATE) if "msgid_plural" in entry}
    sentence = re.compile(r"[A-Za-z]{2,} [a-z]{2,}")
    for path in sources():
        if not path.startswith(ROOMS_WITH_TEXTS) or path.endswith("_log.cpp"):
            continue
        source = re.sub(r"^\s*(?://|#).*|\s//.*", "", (ROOT / path).read_text(), flags=re.M)
        for match in re.finditer(TEXT, source):
            text = "".join(ast.literal_eval(part) for part in re.findall(LITERAL, match[0]))
            if sentence.search(text) and text not in known and not NOT_FOR_PEOPLE.search(source[:match.start()]):
                yield f"{path}: {quoted(text)} is not looked up"


def update():
    TEMPLATE.write_text(template())
    for path in sorted(PO.glob("*.po")):
        subprocess.run(["msgmerge", "--quiet", "--update", "--backup=none", "--no-fuzzy-matching", "--no-location",
                        "--sort-output", "--no-wrap", str(path), str(TEMPLATE)], check=True)
        kept = subprocess.run(["msgattrib", "--no-obsolete", "--no-location", "--sort-output", "--no-wrap", str(path)],
                              check=True, capture_output=True, text=True).stdout
        path.write_text(kept)
        missing = [entry for entry in entries(path) if any(True for _ in faults(entry))]
        if missing:
            print(f"{path.relative_to(ROOT)}: {len(missing)} texts to translate; `tools/i18n.py check` lists them")


def check():
    problems = []
    if not TEMPLATE.exists() or TEMPLATE.read_text() != template():
        problems.append("po/pedvar.pot is stale; `./dev i18n` makes it anew")
    for path in sorted(PO.glob("*.po")):
        problems += check_catalogue(path)
    problems += stray_texts()
    print("\n".join(problems), end="\n" if problems else "")
    return 1 if problems else 0


if __name__ == "__main__":
    if sys.argv[1:] == ["update"]:
        update()
    elif sys.argv[1:] == ["check"]:
        sys.exit(check())
    else:
        sys.exit(__doc__)

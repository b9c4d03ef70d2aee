"""Checks that what the sources look up in the string tables is in them.

    sources.py CASE
"""
import collections
import glob
import html.parser
import os
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
ROOMS = ("activity", "agent", "backupprogram", "diagnostics", "firststart", "messaging", "platform", "schedule", "shell", "update")
LITERALS = r'"(?:[^"\\\n]|\\.)*"(?:\s*"(?:[^"\\\n]|\\.)*")*'
# The lookup, and the functions that look their argument up.
LOOKUP = re.compile(r"\b(?:localizedString|corruptPropertyListError|unwritablePropertyListError|aboutText|findBarText)"
                    r"\s*\(")
# Sets what a person reads; a literal there was not looked up.
SHOWING = re.compile(r"\b(?:setMessageText|setInformativeText|addButton|setTitle|setStringValue|setToolTip"
                     r"|setItemTitleAtIndex|addItemWithTitle|setAccessibleName|setPlaceholderString)\s*\(\s*"
                     r"(?:[0-9a-z_]+,\s*)?(" + LITERALS + ")")
# Where texts are looked up that stand elsewhere, in the file or in values that it reads: which of the literals are such
# texts. Elsewhere those with a space in them are.
CHOSEN_LATER = {
    "activity/model/MomentText.cpp": re.compile(r"[A-Z][a-z]+.*|[a-z]+"),
    "schedule/model/ApplyAlert.cpp": re.compile(r".+"),
    "schedule/model/CalendarRow.h": re.compile(r".+"),
    "schedule/model/EditorState.cpp": re.compile(r".+"),
    "schedule/model/IntervalState.cpp": re.compile(r".+"),
    "platform/linux/system/formats/JSONRecords.cpp": re.compile(r"[A-Z].*\."),
    "platform/linux/system/texts/HTTPStatus.cpp": re.compile(r".*"),
    "platform/linux/ui/styledtext/FindBar.cpp": re.compile(r"[A-Z].*"),
}
# The lookup itself.
MACHINERY = ("platform/linux/ui/windows/LocalizeWidgets.cpp", "platform/linux/system/texts/Localization.cpp",
             "platform/linux/system/errors/CodingError.cpp", "platform/Localization.h")
# Not for translation: a fixed advice, and what only a developer can meet.
AS_IT_STANDS = {"<BRCriterion: %p, type %u>", "You should try installing the latest version available from the web site.", "Missing outlet",
                "No interface of this name"}

ESCAPES = {"n": "\n", "t": "\t", "r": "\r"}


def unescaped(text):
    return re.sub(r"\\(u[0-9A-Fa-f]{4}|.)", lambda match: chr(int(match[1][1:], 16)) if len(match[1]) > 1
                  else ESCAPES.get(match[1], match[1]), text)


def value(literals):
    """What adjacent literals say together."""
    return "".join(unescaped(part[1:-1]) for part in re.findall(r'"(?:[^"\\\n]|\\.)*"', literals))


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


def keys():
    entry = re.compile(r'^"((?:[^"\\]|\\.)*)" = ', re.M)
    return {unescaped(key) for key in entry.findall(read("resources/en.lproj/Localizable.strings"))}


def sources():
    listed = subprocess.run(["git", "-C", ROOT, "ls-files", "-co", "--exclude-standard", *ROOMS], capture_output=True,
                            text=True, check=False).stdout.split("\n")
    if not any(listed):  # not a clone
        listed = [os.path.relpath(os.path.join(folder, name), ROOT) for room in ROOMS
                  for folder, _, names in os.walk(os.path.join(ROOT, room)) for name in names]
    return [path for path in listed if path.endswith((".cpp", ".h", ".mm")) and os.path.exists(os.path.join(ROOT, path))]


def without_comments(text):
    return re.sub(r'("(?:[^"\\\n]|\\.)*")|//[^\n]*|/\*.*?\*/', lambda match: match[1] or "", text, flags=re.S)


def argument(text, start):
    """What stands between a parenthesis, just before start, and the one that closes it."""
    depth, position = 1, start
    for match in re.compile(r'"(?:[^"\\\n]|\\.)*"|[()]').finditer(text, start):
        depth += {"(": 1, ")": -1}.get(match[0], 0)
        position = match.start()
        if depth == 0:
            break
    return text[start:position]


def lookups():
    """Each lookup as (path, its literal texts, which are none where the text is chosen elsewhere)."""
    for path in sources():
        if path in MACHINERY:
            continue
        text = without_comments(read(path))
        for match in LOOKUP.finditer(text):
            inside = argument(text, match.end())
            if re.match(r"\s*std::string_view\s+\w+\s*$", inside) or re.match(r"\s*std::int64_t", inside):
                continue  # a declaration
            yield path, [value(found[0]) for found in re.finditer(LITERALS, inside)]


def report(problems):
    for problem in sorted(set(problems)):
        print(problem)
    return 1 if problems else 0


def every_text_that_the_code_looks_up_has_a_key():
    known, seen, problems = keys(), 0, []
    for path, texts in lookups():
        seen += len(texts)
        problems += [f"{path}: no key {text!r}" for text in texts if text not in known]
    if seen < 20:
        problems.append(f"only {seen} texts are looked up, so this test looks for the wrong thing")
    return report(problems)


def every_text_that_is_chosen_from_a_list_has_a_key():
    known, problems = keys(), []
    files = {path for path, texts in lookups() if not texts} | set(CHOSEN_LATER)
    for path in files:
        chosen = CHOSEN_LATER.get(path, re.compile(r".*[A-Za-z].* .*|.* .*[A-Za-z].*"))
        body = re.sub(r"^\s*#include.*$", "", without_comments(read(path)), flags=re.M)
        texts = [value(found[0]) for found in re.finditer(LITERALS, body)]
        problems += [f"{path}: no key {text!r}" for text in texts
                     if chosen.fullmatch(text) and text not in known and text not in AS_IT_STANDS]
    if "messaging/ZRKError.cpp" not in files:
        problems.append("the errors' texts are not found, so this test looks for the wrong thing")
    return report(problems)


def every_text_of_the_interface_files_has_a_key():
    known, seen, problems = keys(), 0, []
    folder = os.path.join(ROOT, "resources", "linux")
    for name in sorted(os.listdir(folder)):
        if not name.endswith(".ui"):
            continue
        for text in ElementTree.parse(os.path.join(folder, name)).iter("string"):
            if text.get("notr") == "true" or not text.text:
                continue
            seen += 1
            if text.text not in known:
                problems.append(f"{name}: no key {text.text!r}")
    if seen < 20:
        problems.append(f"the interface files have only {seen} texts, so this test looks for the wrong thing")
    return report(problems)


def no_text_is_shown_without_being_looked_up():
    problems = []
    for path in sources():
        for match in SHOWING.finditer(without_comments(read(path))):
            text = value(match[1])
            if re.search(r"[A-Za-z]{2}", text):
                problems.append(f"{path}: {text!r} is shown as it stands")
    return report(problems)


def the_prompts_of_the_policy_are_those_of_the_tables():
    """The authority takes its prompts from the policy file, in the user's language."""
    problems = []
    lang = "{http://www.w3.org/XML/1998/namespace}lang"
    languages = {None: "en", "de": "de", "fr": "fr", "es": "es", "it": "it", "ja": "ja", "zh_CN": "zh-Hans"}
    key = "You must authenticate to change the product settings."
    tree = ElementTree.parse(os.path.join(ROOT, "resources", "linux", "com.zerkolin.brevane.policy"))
    for action in tree.iter("action"):
        for element in ("description", "message"):
            found = {node.get(lang): node.text for node in action.findall(element)}
            if set(found) != set(languages):
                problems.append(f"{action.get('id')}: {element} in the languages {sorted(map(str, found))}")
        for node in action.findall("message"):
            table = read(f"resources/{languages.get(node.get(lang), 'en')}.lproj/Localizable.strings")
            expected = re.search(r'^"' + re.escape(key) + r'" = "(.*)";$', table, re.M)[1]
            if node.text != expected:
                problems.append(f"{action.get('id')}: {node.get(lang)}: {node.text!r} in place of {expected!r}")
    return report(problems)


class HelpPage(html.parser.HTMLParser):
    """What a page of the help links to, how often it has each tag, and what it sets in bold: the names of controls."""

    def __init__(self, language, name):
        super().__init__()
        self.links, self.tags, self.names, self._bold = [], collections.Counter(), [], None
        self.feed(read(f"resources/help/{language}/{name}.html"))

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.tags[tag] += 1
        if tag == "a":
            self.links.append(values["href"])
        if tag == "b":
            self._bold = ""

    def handle_data(self, data):
        if self._bold is not None:
            self._bold += data

    def handle_endtag(self, tag):
        if tag == "b":
            self.names.append(re.sub("[ \n]+", " ", self._bold))
            self._bold = None


HELP_PAGES = {  # of each window
    "MainWindow": "schedule", "BRVActivityController": "activity", "BRVBackupProgramController": "backup-program",
    "BRVConsole": "console", "BRVFirstStartController": "first-start", "BRVLocalSnapshotsController": "snapshots", "BRVPreferencesController": "preferences",
}


def languages():
    return sorted(os.path.basename(path).removesuffix(".lproj") for path in glob.glob("resources/*.lproj"))


def help_pages(language):
    return {os.path.basename(path).removesuffix(".html"): HelpPage(language, os.path.basename(path).removesuffix(".html"))
            for path in glob.glob(f"resources/help/{language}/*.html")}


def the_help_calls_every_control_by_its_name():
    problems = []
    named = 0
    for language in languages():
        table = read(f"resources/{language}.lproj/Localizable.strings")
        titles = {re.sub(r"\(&.\)", "", unescaped(text)).replace("&", "")
                  for text in re.findall(r'^".*" = "(.*)";$', table, re.M)}
        for name, page in help_pages(language).items():
            named += len(page.names)
            problems += [f"{language}/{name}: nothing is called {word!r}" for word in page.names if word not in titles]
    if named < 100:
        problems.append("the help names hardly any control, so this test looks for the wrong thing")
    return report(problems)


def the_help_has_a_page_for_each_window_in_every_language():
    problems = []
    windows = [os.path.basename(path).removesuffix(".ui") for path in glob.glob("resources/linux/*.ui")
               if '<widget class="QMainWindow"' in read(path)]
    problems += [f"no page is known for {window}" for window in windows if window not in HELP_PAGES]
    names = {HELP_PAGES[window] for window in windows if window in HELP_PAGES} | {"index", "updates"}
    english = help_pages("en")
    for language in languages():
        pages = help_pages(language)
        problems += [f"{language}: the page {name} is missing" for name in names if name not in pages]
        for name, page in pages.items():
            problems += [f"{language}/{name}: {link} leads nowhere" for link in page.links
                         if not os.path.exists(f"resources/help/{language}/{link}")]
            if name not in english or page.tags != english[name].tags:
                problems.append(f"{language}/{name}: tells something else than the English page")
        if "index" in pages:
            problems += [f"{language}: nothing leads to {name}" for name in names - {"index"}
                         if f"{name}.html" not in pages["index"].links]
    return report(problems)


if __name__ == "__main__":
    os.chdir(ROOT)
    sys.exit(globals()[sys.argv[1]]())

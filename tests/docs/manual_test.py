#!/usr/bin/python3
"""The manual holds what its checks ask for, and each check finds what it is there to find."""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "docs/generator"))

import check
import examples
import help_file
import manual
import website
from pages import Writer, read_contents
from surface import read_surface

IDL = """
library SampleLib
{
  typedef [v1_enum] enum Colours {
    [helpstring("like blood")] colRed = 1,
    colBlue = 2
  } Colours;

  [object, dual]
  interface IvBox : IDispatch
  {
    [propget, id(0), helpstring("The name.")]
    HRESULT Name([out, retval] BSTR* pVal);
    [propput, id(0), helpstring("The name.")]
    HRESULT Name([in] BSTR value);
    [id(5), helpstring("Opens it.")]
    HRESULT Open(BSTR Path, [in, optional] VARIANT Mode, [out, retval] IvBox** box);
  };

  coclass Box
  {
    [default] interface IvBox;
  };
};
"""
CLASSES = '{CLSID_Box, IID_IvBox, L"Box Class", L"Maker.Box.1", L"Maker.Box", kBoth, false, new_box},'
ERROR_HEADER, ERROR_SOURCE = "enum\n  broken = 30077,\n", '{ErrorNumber::broken, "It is broken"},'
SURFACE = read_surface(IDL, CLASSES, ERROR_HEADER, ERROR_SOURCE)

BOX_PAGE = "# Box\n\nA box.\n\n## Name\n\nWhat the box is called.\n\n## Open\n\nOpens the box; 30077 when it cannot.\n"
ERRORS_PAGE = "# Errors\n\n## 30077\n\n**Cause.** It fell.\n\n**Cure.** Glue.\n"
ENUMERATIONS_PAGE = """# Enumerations

## Colours

| Name | Value | Meaning |
|---|---|---|
| `colRed` | Red |
| `colBlue` | Blue |
"""


def pages(**changed):
    texts = {"Box": BOX_PAGE, "errors": ERRORS_PAGE, "enumerations": ENUMERATIONS_PAGE} | changed
    paths = {f"reference/{name}.md": text for name, text in texts.items()}
    return {path: Writer(SURFACE).page(path, text) for path, text in paths.items()}


class TheSurface(unittest.TestCase):
    def test_a_property_with_get_and_put_is_one_member_with_two_slots(self):
        name = SURFACE.classes["Box"].members["Name"]
        self.assertEqual((name.signature(), name.kind(), name.dispid, name.help),
                         ("Name As String", "Property, read and write", 0, "The name."))
        self.assertEqual([(o.kind, o.slot) for o in name.operations], [("get", 7), ("put", 8)])

    def test_a_method_shows_its_optional_arguments_in_brackets_and_its_result_as_a_class(self):
        member = SURFACE.classes["Box"].members["Open"]
        self.assertEqual((member.signature(), member.kind(), member.operations[0].slot),
                         ("Open(Path As String, [Mode As Variant]) As Box", "Method", 9))

    def test_enumerations_and_errors_come_with_their_texts(self):
        self.assertEqual(SURFACE.enumerations["Colours"].members, {"colRed": (1, "like blood"), "colBlue": (2, "")})
        self.assertEqual(SURFACE.errors, {30077: "It is broken"})

    def test_the_real_surface_is_whole(self):
        surface = manual.surface_of(ROOT)
        slots = {name: sum(len(m.operations) for m in entry.members.values()) for name, entry in surface.classes.items()}
        self.assertEqual(slots, {"Vellobar": 19, "Message": 58, "Messages": 6, "Header": 5, "Headers": 9, "Attachment": 9,
                                 "Attachments": 6, "Decoder": 10, "Encoder": 10})
        self.assertEqual([len(e.members) for e in surface.enumerations.values()], [6, 3, 47])
        self.assertEqual(sorted(surface.errors), [8, 30000, 30001, 30002, *range(30004, 30015)])


class ThePages(unittest.TestCase):
    def test_a_member_gets_its_signature_under_its_heading(self):
        body = pages()["reference/Box.md"].body
        self.assertRegex(body, r'<h2 id="open">Open</h2>\s*<div class="facts"><p class="signature">'
                               r"<code>Open\(Path As String, \[Mode As Variant\]\) As Box</code>")
        self.assertIn("Method · DISPID 5", body)

    def test_the_members_are_listed_by_name_above_the_first_of_them(self):
        body = pages()["reference/Box.md"].body
        self.assertRegex(body, r'A box.</p>\s*<ul class="members"><li><a href="#name">Name</a></li>'
                               r'<li><a href="#open">Open</a></li></ul>\s*<h2 id="name">')

    def test_a_row_of_an_enumeration_gets_its_value(self):
        self.assertIn("<td>2</td>\n<td>Blue</td>", pages()["reference/enumerations.md"].body)

    def test_members_classes_and_errors_link_themselves_outside_code_blocks_only(self):
        page = Writer(SURFACE).page("howto/x.md", "# X\n\n`Box.Open` of a `Box`: 30077.\n\n```text\n`Box.Open` 30077\n```\n")
        self.assertIn('<a href="../reference/Box.html#open"><code>Box.Open</code></a>', page.body)
        self.assertIn('<a href="../reference/Box.html"><code>Box</code></a>', page.body)
        self.assertIn('<a href="../reference/errors.html#30077">30077</a>', page.body)
        self.assertEqual(page.body.count("<a "), 3)


class TheChecks(unittest.TestCase):
    def complaints(self, of, **changed):
        return list(of(SURFACE, pages(**changed)))

    def test_nothing_is_said_about_pages_that_are_complete(self):
        for one in (check.check_members, check.check_enumerations, check.check_errors, check.check_names):
            self.assertEqual(self.complaints(one), [])

    def test_a_member_without_a_section_is_found(self):
        self.assertEqual(self.complaints(check.check_members, Box=BOX_PAGE.replace("## Open", "### Open")),
                         ["reference/Box.md: no section about Open"])

    def test_an_empty_section_is_found(self):
        self.assertEqual(self.complaints(check.check_members, Box=BOX_PAGE.replace("What the box is called.", "")),
                         ["reference/Box.md: the section about Name is empty"])

    def test_a_section_about_a_member_that_is_not_there_is_found(self):
        self.assertEqual(self.complaints(check.check_members, Box=BOX_PAGE + "\n## Burn\n\nSets it on fire, slowly.\n"),
                         ["reference/Box.md: a section about Burn, which is no member of Box"])

    def test_a_missing_and_a_strange_row_of_an_enumeration_are_found(self):
        misspelt = ENUMERATIONS_PAGE.replace("Blue` |", "Bleu` |")
        self.assertEqual(self.complaints(check.check_enumerations, enumerations=misspelt),
                         ["reference/enumerations.md: 0 rows for Colours.colBlue",
                          "reference/enumerations.md: a row for colBleu, which is no member of Colours"])

    def test_an_error_without_cause_or_cure_or_number_is_found(self):
        self.assertEqual(self.complaints(check.check_errors, errors=ERRORS_PAGE.replace("**Cure.** Glue.", "")),
                         ["reference/errors.md: 30077 has no cure"])
        self.assertEqual(self.complaints(check.check_errors, errors=ERRORS_PAGE.replace("30077", "30078")),
                         ["reference/errors.md: no section about 30077",
                          "reference/errors.md: a section about 30078, which no error has"])

    def test_a_member_that_is_only_named_has_to_exist(self):
        self.assertEqual(self.complaints(check.check_names, Box=BOX_PAGE + "\nSee `Box.Close`.\n"),
                         ["reference/Box.md: Box has no member Close"])

    def test_links_to_missing_pages_headings_and_pictures_are_found(self):
        files = {"a.html": '<h2 id="here"></h2><a href="b/c.html#there"></a><a href="#nowhere"></a><a href="d.html">',
                 "b/c.html": '<h2 id="there"></h2><a href="../a.html#here"></a><img src="../x.svg"><img src="../y.svg">'}
        self.assertEqual(list(check.check_links(files, {"x.svg"})),
                         ["a.html: a link to #nowhere, a page without that heading",
                          "a.html: a link to d.html, which is not there",
                          "b/c.html: a link to ../y.svg, which is not there"])

    def test_a_page_that_the_contents_do_not_list_is_found(self):
        contents = read_contents("- [Errors](reference/errors.md)\n- Boxes\n  - [Box](reference/Box.md)\n  - [Old](old.md)\n")
        self.assertEqual([(entry.title, entry.path, entry.depth) for entry in contents[1:3]],
                         [("Boxes", "", 0), ("Box", "reference/Box.md", 1)])
        self.assertEqual(list(check.check_contents(contents, pages())),
                         ["contents.md: reference/enumerations.md is listed 0 times",
                          "contents.md: there is no page old.md"])


class TheExamples(unittest.TestCase):
    def test_a_text_block_right_behind_an_example_is_what_it_prints(self):
        source = "# X\n\n```sh\necho a\n```\n\n```text\na\n```\n\n```sh\ntrue\n```\n\nProse.\n\n```text\nno output\n```\n"
        found = [(e.line, e.language, e.code, e.printed) for e in examples.examples_of("x.md", source)]
        self.assertEqual(found, [(3, "sh", "echo a\n", "a\n"), (11, "sh", "true\n", None), (17, "text", "no output\n", None)])

    def run_shell_example(self, code, printed):
        with tempfile.TemporaryDirectory() as work, open("/dev/null", "w") as nowhere:
            old, sys.stdout = sys.stdout, nowhere
            try:
                page = {"x.md": [examples.Example("x.md", 1, "sh", code, printed)]}
                return examples.run_pages(page, Path("/bin/true"), Path(work) / "mail")
            finally:
                sys.stdout = old

    def test_an_example_that_fails_or_prints_something_else_is_found(self):
        self.assertEqual(self.run_shell_example("head -c 5 inbox.mbox; echo\n", "From \n"), 0)
        self.assertEqual(self.run_shell_example("head -c 5 inbox.mbox; echo\n", "from \n"), 1)
        self.assertEqual(self.run_shell_example("false\ntrue\n", None), 1)

    def test_a_script_that_stops_before_its_end_is_found(self):
        with tempfile.TemporaryDirectory() as work:
            example = examples.Example("x.md", 1, "vb", "WScript.Echo 1\n", "1\n", Path(work) / "out")
            example.output.write_bytes(b"1\r\n" + examples.CAME_TO_ITS_END.encode() + b"\r\n")
            self.assertEqual(examples.windows_output(example), "1\n")
            example.output.write_bytes(b"1\r\n")
            self.assertRaisesRegex(AssertionError, "stopped before its end", examples.windows_output, example)


class TheManual(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.manual = manual.Manual()

    def test_it_is_complete_and_every_link_leads_somewhere(self):
        self.assertEqual(self.manual.complaints(), [])

    def test_every_page_and_every_member_can_be_found_by_the_search(self):
        index = self.manual.files["theme/index.js"]
        for page in self.manual.pages.values():
            self.assertIn(f'"address": "{page.target}"', index)
        self.assertIn('"address": "reference/Message.html#partsboundary"', index)

    @unittest.skipUnless(shutil.which("chmcmd"), "the help compiler is not installed: scripts/install-packages")
    def test_the_help_file_holds_every_page_as_it_was_written(self):
        with tempfile.TemporaryDirectory() as work:
            files = help_file.help_files(manual.DOCS, self.manual.surface, self.manual.contents, self.manual.pages)
            website.write_site(f"{work}/help", manual.DOCS, files)
            made = help_file.compile_help(f"{work}/help")
            subprocess.run(["chmls", "extractall", made, f"{work}/out"], check=True, capture_output=True)
            for page in self.manual.pages.values():
                self.assertEqual((Path(work) / "out" / page.target).read_text(), files[page.target], page.target)


if __name__ == "__main__":
    unittest.main()

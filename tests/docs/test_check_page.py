"""The checker of pages, held against pages that are right and pages that are wrong in one way each."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parent / "check-page"
PROGRAMS = os.environ["FAULTKEEPER_PROGRAMS"]


def is_alive(process):
    """A process that nobody has waited for yet is not."""
    status = Path("/proc", process, "status")
    return status.exists() and "\nState:\tZ" not in status.read_text()


class PageTest(unittest.TestCase):
    def setUp(self):
        self._directory = tempfile.TemporaryDirectory(prefix="faultkeeper-page-test-")
        self.project = Path(self._directory.name)
        (self.project / ".ci").mkdir()
        (self.project / ".ci/run").write_text("# scripts/never\nRun scripts/demo\n")
        (self.project / "scripts").mkdir()
        (self.project / "scripts/demo").write_text("scripts/setup --minimal\n")
        (self.project / "scripts/setup").write_text("")
        (self.project / "scripts/never").write_text("")
        (self.project / "listing.xml").write_text("<a>\n    <b/>\n    <c/>\n</a>\n")
        (self.project / "not-run.txt").write_text("# none\n")

    def tearDown(self):
        self._directory.cleanup()

    def check(self, text, *options):
        """The exit status and all that is printed behind the summary."""
        (self.project / "page.md").write_text(text)
        answer = subprocess.run(
            [sys.executable, CHECKER, "--programs", PROGRAMS, "--project", self.project, "--not-run",
             self.project / "not-run.txt", *options, self.project / "page.md"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        return answer.returncode, answer.stdout

    def finds(self, text, finding):
        status, printed = self.check(text)
        self.assertIn(finding, printed)
        self.assertEqual(status, 1)

    def is_content(self, text, commands, not_run=0):
        status, printed = self.check(text)
        self.assertEqual(printed.splitlines()[0], f"page.md: {commands} commands run, {not_run} blocks not run")
        self.assertEqual(status, 0, printed)

    # Running

    def test_what_is_printed_as_said_is_right(self):
        self.is_content("Text\n\n```console\n$ echo one; echo two >&2\none\ntwo\n```\n", 1)

    def test_another_output_is_shown_as_a_patch(self):
        self.finds("```console\n$ echo two\none\n```\n",
                   "--- page.md:2\n+++ page.md:2, as printed\n@@ -1,2 +1,2 @@\n $ echo two\n-one\n+two\n")

    def test_output_that_the_page_lacks_differs(self):
        self.finds("```console\n$ echo one\n```\n", "+one")

    def test_output_that_is_not_printed_differs(self):
        self.finds("```console\n$ true\none\n```\n", "-one")

    def test_an_empty_line_is_a_line(self):
        self.finds("```console\n$ printf 'a\\n\\nb\\n'\na\nb\n```\n", "@@ -1,3 +1,4 @@")

    def test_later_blocks_know_what_earlier_ones_did(self):
        self.is_content("```console\n$ cd /\n$ A=5\n```\n\nText\n\n```console\n$ echo $PWD $A\n/ 5\n```\n", 3)

    def test_a_command_may_have_several_lines(self):
        self.is_content("```console\n$ cat <<END\n> one\n>\n> two\n> END\none\n\ntwo\n```\n", 1)

    def test_a_command_does_not_read_the_ones_behind_it(self):
        self.is_content("```console\n$ cat\n$ echo there\nthere\n```\n", 2)

    def test_a_command_that_fails_silently_is_told(self):
        self.finds("```console\n$ false\n$ true\n```\n", "page.md:2: \"false\" ends with 1")

    def test_a_failure_may_be_shown(self):
        self.is_content("```console\n$ (exit 3)\n$ echo $?\n3\n```\n", 2)

    def test_a_shell_that_ends_is_told(self):
        self.finds("```console\n$ exit 0\n$ echo there\nthere\n```\n", "the shell has ended")

    def test_what_is_left_running_is_told_and_ended(self):
        status, printed = self.check("```console\n$ sleep 600 &\n$ echo $! >pid; cp pid %s/pid\n```\n" % self.project)
        self.assertIn("its commands leave 1 processes running", printed)
        self.assertEqual(status, 1)
        self.assertFalse(is_alive((self.project / "pid").read_text().strip()))

    def test_a_block_that_begins_with_output_is_none(self):
        self.finds("```console\nfaultkeeperctl status\n```\n", "a console block begins with a command")

    def test_the_programs_are_there_and_the_directory_has_its_public_name(self):
        self.is_content("```console\n$ faultkeeperctl --version >/dev/null; pwd\n/home/you/faultkeeper\n```\n", 1)

    # Values

    def test_a_time_stands_for_any_time(self):
        self.is_content("```console\n$ date '+%F %T'\n2001-01-01 00:00:00\n```\n", 1)

    def test_a_time_stands_for_a_time_only(self):
        self.finds("```console\n$ echo never\n2001-01-01 00:00:00\n```\n", "-<TIME>\n+never")

    def test_other_numbers_stand_for_themselves(self):
        self.finds("```console\n$ echo 4\n5\n```\n", "-5\n+4")

    def test_blanks_at_the_end_do_not_count(self):
        self.is_content("```console\n$ echo 'a '\na\n```\n", 1)

    # Not run

    def test_a_block_that_is_not_run_says_why_and_is_counted(self):
        text = "*Not run here: it takes a week.*\n\n```console\n$ false\n```\n"
        self.finds(text, "page.md: 1 blocks say that they are not run; not-run.txt has 0")
        (self.project / "not-run.txt").write_text("page.md 1\n")
        self.is_content(text, 0, 1)

    def test_fewer_blocks_than_agreed_are_told(self):
        (self.project / "not-run.txt").write_text("page.md 1\n")
        self.finds("Text\n", "page.md: 0 blocks say that they are not run; not-run.txt has 1")

    def test_what_ci_runs_is_looked_up(self):
        text = "*Run by `.ci/run`.*\n\n```console\n$ scripts/%s\n```\n"
        self.is_content(text % "demo", 0)
        self.is_content(text % "setup", 0)
        self.finds(text % "never", "page.md:4: .ci/run does not run scripts/never")

    def test_what_a_test_runs_is_looked_up(self):
        (self.project / "tests").mkdir()
        (self.project / "tests/CMakeLists.txt").write_text(
            "add_test(NAME demo_works COMMAND \"${X}/scripts/demo\")\nadd_test(NAME other COMMAND scripts/never)\n")
        text = "*Run by the test `demo_works`.*\n\n```console\n$ scripts/%s\n```\n"
        self.is_content(text % "demo", 0)
        self.finds(text % "never", "page.md:4: demo_works does not run scripts/never")

    # Other rules

    def test_commands_elsewhere_are_told(self):
        for text in ["    faultkeeperctl list\n", "```\ncmake --preset dev\n```\n", "```sh\nls\n```\n", "    A=1 scripts/x\n"]:
            self.finds("Text\n\n" + text, "a command belongs into a console block")

    def test_other_code_is_none_of_our_business(self):
        self.is_content("Text\n\n    d4:argsle\n\n```text\nPicture --> picture\n```\n", 0)

    def test_a_listing_is_part_of_its_file(self):
        self.is_content("```xml listing.xml\n<b/>\n<c/>\n```\n", 0)
        self.finds("```xml listing.xml\n<b/>\n<d/>\n```\n", "page.md:2: listing.xml has other lines")
        self.finds("```xml other.xml\n<b/>\n```\n", "page.md:2: there is no other.xml")
        self.finds("```xml\n<b/>\n```\n", "page.md:2: a listing says which file it is from")

    def test_commands_within_a_sentence_exist_with_their_options(self):
        self.is_content("Use `faultkeeperctl hierarchy --all` or `faultkeeperd --config DIR`.\n", 0)
        self.finds("Use `faultkeeperctl heirarchy`.\n", "page.md:1: there is no command heirarchy")
        self.finds("Use `faultkeeperctl list --most`.\n", "page.md:1: faultkeeperctl has no --most here")
        self.finds("Use `faultkeeperd --conf DIR`.\n", "page.md:1: faultkeeperd has no --conf here")

    def test_selections_of_tests_select_something(self):
        (self.project / "tests").mkdir()
        (self.project / "tests/SomeTest.cpp").write_text("TEST_F(Some, ThingHolds)\n")
        self.is_content("Use `ctest --preset dev -R 'Nothing\\|Some'`.\n", 0)
        self.finds("Use `ctest --preset dev -R Other`.\n", "page.md:1: no test is selected by Other")

    def test_the_tests_of_a_line_are_all_selected_there(self):
        (self.project / "tests/some").mkdir(parents=True)
        (self.project / "tests/some/OneTest.cpp").write_text("TEST(One, Holds)\nTEST_P(Two, HoldsToo)\n")
        (self.project / "tests/ThreeTest.cpp").write_text("TEST(Three, Holds)\n")
        self.is_content("| `OneTest` | `ctest --preset dev -R 'One\\|Two'` |\n", 0)
        self.is_content("| `OneTest` | `ctest -R One`, `ctest -R Two` |\n", 0)
        self.is_content("| `OneTest` | `ctest --test-dir build/dev/tests/some` |\n", 0)
        self.is_content("| `tests/some` | `ctest --test-dir build/dev/tests` |\n", 0)
        self.is_content("`OneTest` is a test.\n", 0)
        self.finds("| `OneTest` | `ctest --preset dev -R One` |\n", "page.md:1: Two.HoldsToo is not selected")
        self.finds("| `tests/some` | `ctest --preset dev -R Two` |\n", "page.md:1: One.Holds is not selected")
        self.finds("| `ThreeTest` | `ctest --test-dir build/dev/tests/some -R Th` |\n", "page.md:1: Three.Holds is not selected")

    def test_links_lead_somewhere(self):
        self.is_content("# A Head, and more\n\n[a](listing.xml) [b](#a-head-and-more) [c](https://example.org)\n", 0)
        self.finds("[a](nowhere.md)\n", "page.md:1: a link leads nowhere: nowhere.md")
        self.finds("[a](#nothing)\n", "page.md:1: the page has no heading for #nothing")

    # Renewing

    def test_an_update_writes_what_was_printed_and_keeps_values(self):
        self.check("Text\n\n```console\n$ echo one; date '+%F %T'\nold\n2001-01-01 00:00:00\n```\nEnd\n", "--update")
        self.assertEqual((self.project / "page.md").read_text(),
                         "Text\n\n```console\n$ echo one; date '+%F %T'\none\n2001-01-01 00:00:00\n```\nEnd\n")


if __name__ == "__main__":
    unittest.main()

"""Help text, manual page, completions and programs agree on the options."""

import os
import re
import shutil
import subprocess
import tempfile
import unittest

from program import REPOSITORY, output_of

PROGRAM_PATHS = {os.path.basename(path): path for path in os.environ["MEDIASPLIT_PROGRAMS"].split(":")}
PROGRAMS = list(PROGRAM_PATHS)
PACKAGING = os.path.join(REPOSITORY, "packaging")
OPTION = r"--?[a-z][a-z-]*"


def help_lines(name):
    """(option, what follows it) of each line under a heading that begins with "Options"."""
    text = output_of(PROGRAM_PATHS[name], "--help" if name == "mediasplit-report" else "-h")
    blocks = re.findall(r"^Options[^\n]*:\n(.*?)(?:\n\n|\Z)", text, re.MULTILINE | re.DOTALL)
    return re.findall(r"^ {2,3}(%s)\b ?(\S*)" % OPTION, "\n".join(blocks), re.MULTILINE)


def help_options(name):
    return {option for option, _ in help_lines(name)}


def help_choices(name):
    """The words that may follow an option, of the options that have a fixed set of them."""
    return {option: set(value.split("|")) for option, value in help_lines(name) if "|" in value}


def manual_options(name):
    """Options that head a paragraph of the manual page's OPTIONS section."""
    with open(os.path.join(PACKAGING, "man", name + ".1"), encoding="utf-8") as page:
        text = page.read().replace("\\-", "-")
    section = re.search(r"^\.SH OPTIONS\n(.*?)^\.SH ", text, re.MULTILINE | re.DOTALL).group(1)
    heads = re.findall(r"^\.TP\n(.*)$", section, re.MULTILINE)
    found = set()
    for head in heads:
        found |= set(re.findall(r"(?<![\w-])(%s)" % OPTION, head))
    return found


def bash_completions(name, *words):
    """What bash offers for the last of `words`, in the current folder."""
    script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMPREPLY=(); "_${1//-/_}"; ' \
             'printf "%s\\n" "${COMPREPLY[@]}"'
    text = output_of("bash", "-c", script, "bash", os.path.join(PACKAGING, "completions", name + ".bash"), name, *words)
    return set(text.split("\n")) - {""}


@unittest.skipUnless(shutil.which("zsh"), "zsh isn't installed")
class ZshTest(unittest.TestCase):
    def specs(self, name):
        script = 'function _arguments() { print -rl -- "$@" }; source "$1"'
        return output_of("zsh", "-f", "-c", script, "zsh", os.path.join(PACKAGING, "completions", "_" + name))

    def test_zsh_knows_the_options_of_the_help_text(self):
        for name in PROGRAMS:
            with self.subTest(name):
                specs = self.specs(name).splitlines()
                found = set()
                for spec in specs:
                    head = re.match(r"(?:\([^)]*\))?(?:\{([^}]*)\}|(%s))" % OPTION, spec)
                    self.assertIsNotNone(head, spec)
                    found.add(head.group(2))
                self.assertEqual(found, help_options(name))

    def test_file_names_the_command(self):
        for name in PROGRAMS:
            with open(os.path.join(PACKAGING, "completions", "_" + name), encoding="utf-8") as file:
                self.assertEqual(file.readline().split(), ["#compdef", name])


class InterfaceTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="mediasplit_interface_")
        self.addCleanup(shutil.rmtree, self.folder, True)
        self.before = os.getcwd()
        self.addCleanup(os.chdir, self.before)
        os.chdir(self.folder)

    def test_manual_page_has_the_options_of_the_help_text(self):
        for name in PROGRAMS:
            with self.subTest(name):
                self.assertEqual(manual_options(name), help_options(name))

    def test_bash_offers_the_options_of_the_help_text(self):
        for name in PROGRAMS:
            with self.subTest(name):
                self.assertEqual(bash_completions(name, ""), help_options(name))

    def test_choices_of_an_option_are_the_same_everywhere(self):
        self.assertEqual(set(help_choices("mediasplit-report")), {"--format", "--fail-on", "--min-level"})
        for name in PROGRAMS:
            with open(os.path.join(PACKAGING, "man", name + ".1"), encoding="utf-8") as page:
                manual = page.read().replace("\\-", "-").replace('"', "")
            with open(os.path.join(PACKAGING, "completions", "_" + name), encoding="utf-8") as file:
                zsh = file.read()
            for option, choices in help_choices(name).items():
                with self.subTest("%s %s" % (name, option)):
                    self.assertEqual(bash_completions(name, option, ""), choices)
                    self.assertEqual(set(re.search(r"'%s\[[^\n]*:\((.*)\)'" % option, zsh).group(1).split()), choices)
                    head = re.search(r"^\.TP\n\.BR %s (.*)$" % option, manual, re.MULTILINE).group(1)
                    self.assertEqual(set(head.replace("|", " ").split()), choices)

    def test_bash_goes_on_with_a_begun_option(self):
        self.assertEqual(bash_completions("mediasplit", "--d"), {"--decryption-keys"})

    def test_bash_offers_inputs_and_folders(self):
        for name in ("film.mp4", "list.m3u8", "notes.txt", "sound.ac4"):
            open(name, "w", encoding="utf-8").close()
        os.mkdir("season")
        for name in PROGRAMS:
            with self.subTest(name):
                self.assertEqual(bash_completions(name, "-i", ""), {"film.mp4", "list.m3u8", "sound.ac4", "season"})
                self.assertEqual(bash_completions(name, "-i", "fi"), {"film.mp4"})
                self.assertEqual(bash_completions(name, "-o", ""), {"season"})
                self.assertEqual(bash_completions(name, "--pid", ""), set())

    def test_program_takes_each_option(self):
        for name in PROGRAMS:
            for option in help_options(name):
                with self.subTest("%s %s" % (name, option)):
                    done = subprocess.run([PROGRAM_PATHS[name], option, "1"], stdin=subprocess.DEVNULL,
                                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)
                    said = done.stderr.decode()
                    self.assertNotIn('The command "%s" is unsupported.' % option, said)
                    self.assertNotIn("unrecognized option", said)

    def test_manual_page_names_all_kinds_of_input(self):
        with open(os.path.join(REPOSITORY, "src", "main", "input_format.cpp"), encoding="utf-8") as source:
            suffixes = set(re.findall(r'"(\.\w+)"', source.read()))
        self.assertIn(".m3u8", suffixes)
        with open(os.path.join(PACKAGING, "man", "mediasplit.1"), encoding="utf-8") as page:
            text = page.read()
        for suffix in suffixes:
            self.assertRegex(text, r"\%s\b" % suffix)
        for name in PROGRAMS:
            for suffix in suffixes:
                open("film" + suffix, "w", encoding="utf-8").close()
            self.assertEqual({"film" + suffix for suffix in suffixes}, bash_completions(name, "-i", "film."))
            with open(os.path.join(PACKAGING, "completions", "_" + name), encoding="utf-8") as file:
                pattern = re.search(r"\*\.\(([\w|]*)\)", file.read()).group(1)
            self.assertEqual({"." + suffix for suffix in pattern.split("|")}, suffixes)

    @unittest.skipUnless(shutil.which("mandoc"), "mandoc isn't installed")
    def test_manual_pages_are_clean(self):
        for name in PROGRAMS:
            done = subprocess.run(["mandoc", "-T", "lint", "-W", "warning", os.path.join(PACKAGING, "man", name + ".1")],
                                  stdout=subprocess.PIPE, timeout=60)
            self.assertEqual(done.stdout.decode(), "")

    @unittest.skipUnless(shutil.which("shellcheck"), "shellcheck isn't installed")
    def test_completions_are_clean(self):
        for name in PROGRAMS:
            output_of("shellcheck", "-s", "bash", os.path.join(PACKAGING, "completions", name + ".bash"))


if __name__ == "__main__":
    unittest.main()

"""The commands of the pages give the output that the pages show."""

import os
import re
import shutil
import socket
import subprocess
import time
import unittest

from program import REPOSITORY, ProgramTest

PROGRAMS = os.environ["MEDIASPLIT_PROGRAMS"].split(":")


def page_text(page):
    with open(os.path.join(REPOSITORY, page), encoding="utf-8") as file:
        return file.read()


def steps_of(text):
    """(command, output) of each "$ " line in the console blocks of a page."""
    found = []
    for block in re.findall(r"^```console\n(.*?)^```$", text, re.MULTILINE | re.DOTALL):
        for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
            command, _, output = part.partition("\n")
            found.append((command, output))
    return found


def pattern_of(output):
    """The output as a pattern: a line "..." stands for any lines, and " ... " in a line for any text."""
    return "".join(r"(?:.*\n)*" if line == "..." else re.escape(line).replace(r"\ \.\.\.\ ", " .* ") + r"\n"
                   for line in output.splitlines())


def free_port():
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        return taken.getsockname()[1]


def wait_for(port):
    for _ in range(200):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return
        time.sleep(0.05)
    raise AssertionError("nothing listens on port %d" % port)


@unittest.skipUnless(shutil.which("ffmpeg"), "ffmpeg isn't installed")
class CommandsTest(ProgramTest):
    def setUp(self):
        super().setUp()
        os.symlink(os.path.join(REPOSITORY, "demo"), self.path("demo"))
        folders = [os.path.dirname(program) for program in PROGRAMS]
        self.environment = dict(os.environ, LC_ALL="C", PATH=":".join([*folders, os.environ["PATH"]]))

    def start(self, command, port):
        server = subprocess.Popen(["bash", "-c", "exec " + command.rstrip("& ")], cwd=self.folder,
                                  env=self.environment, stdin=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        wait_for(port)

    def run_page(self, page):
        port = free_port()
        status = 0
        for command, expected in steps_of(page_text(page)):
            command = re.sub(r"\b8000\b", str(port), command)
            if command.endswith("&"):
                self.start(command, port)
                continue
            done = subprocess.run(["bash", "-c", "(exit %d); %s" % (status, command)], cwd=self.folder,
                                  env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, timeout=120)
            status = done.returncode
            printed = done.stdout.decode(errors="replace").replace(str(port), "8000")
            self.assertRegex(printed, r"\A%s\Z" % pattern_of(expected), command)

    def test_commands_of_the_front_page(self):
        self.run_page("README.md")

    def test_commands_of_the_page_on_findings(self):
        self.run_page(os.path.join("docs", "findings.md"))


class PagesTest(unittest.TestCase):
    def test_front_page_shows_a_run_of_each_kind_of_input(self):
        commands = [command for command, _ in steps_of(page_text("README.md"))]
        for kind in (".mp4", "clip.ts", "%03d.ts", ".m3u8", ".mpd", ".ec3", ".ac4", "http://"):
            self.assertTrue(any(re.search(r"mediasplit\S* -i \S*%s" % re.escape(kind), command) for command in commands),
                            kind)

    def test_explained_errors_are_lines_of_the_catalogue(self):
        with open(os.path.join(REPOSITORY, "src", "log", "catalogue_rows.h"), encoding="utf-8") as source:
            rows = re.findall(r'^    \{4\d+, .* kFailure, "[^"]*", "(.*)"\},$', source.read(), re.MULTILINE)
        shapes = {re.sub(r"%\w+", "...", row.replace('\\"', '"')).rstrip(".") for row in rows}
        explained = re.findall(r"^\| `ERROR: (.*?)` \|", page_text("README.md"), re.MULTILINE)
        self.assertGreater(len(explained), 10)
        for line in explained:
            self.assertIn(line.rstrip("."), shapes)

    def test_files_that_the_pages_name_are_there(self):
        for page in ("ARCHITECTURE.md", "CONTRIBUTING.md", os.path.join("docs", "batch.md")):
            named = set(re.findall(r"`((?:src|tests|packaging|scripts|docs|batch|tools|base)/[\w./-]+)`", page_text(page)))
            self.assertTrue(named or page != "CONTRIBUTING.md")
            for path in named:
                if "flac" not in path:  # what the walk through a new codec makes
                    self.assertTrue(os.path.exists(os.path.join(REPOSITORY, path)), "%s names %s" % (page, path))

    def test_links_between_pages_lead_somewhere(self):
        pages = [name for name in os.listdir(REPOSITORY) if name.endswith(".md")]
        pages += [os.path.join("docs", name) for name in os.listdir(os.path.join(REPOSITORY, "docs"))
                  if name.endswith(".md")]
        for page in pages:
            for target in re.findall(r"\]\(([^)\s]+)\)", page_text(page)):
                if "://" in target:
                    continue
                path, _, anchor = target.partition("#")
                path = os.path.normpath(os.path.join(os.path.dirname(page), path)) if path else page
                self.assertTrue(os.path.exists(os.path.join(REPOSITORY, path)), "%s links to %s" % (page, target))
                if anchor:
                    text = page_text(path)
                    anchors = {re.sub(r"[^a-z0-9_-]", "", title.lower().replace(" ", "-"))
                               for title in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}
                    anchors |= set(re.findall(r'<a id="([^"]+)">', text))
                    self.assertTrue(anchor in anchors, "%s links to %s" % (page, target))


if __name__ == "__main__":
    unittest.main()

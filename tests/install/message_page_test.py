"""docs/messages.md says what the catalogue says."""

import os
import re
import subprocess
import unittest

from program import REPOSITORY

PAGE = os.path.join(REPOSITORY, "docs", "messages.md")
ROWS = os.path.join(REPOSITORY, "src", "log", "catalogue_rows.h")


class MessagePageTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        with open(PAGE, encoding="utf-8") as page:
            self.page = page.read()

    def test_page_is_what_the_catalogue_gives(self):
        written = subprocess.run([os.environ["MESSAGE_TABLE"]], stdout=subprocess.PIPE, check=True).stdout.decode()
        self.assertEqual(self.page, written, "`make docs` writes the page anew")

    def test_each_number_of_the_catalogue_stands_on_the_page_once(self):
        with open(ROWS, encoding="utf-8") as rows:
            numbers = re.findall(r"^    \{(\d+), ", rows.read(), re.MULTILINE)
        self.assertEqual(len(numbers), 608)
        shown = re.findall(r'^\| <a id="m(\d+)"></a>(\d+) \|', self.page, re.MULTILINE)
        self.assertTrue(all(anchor == number for anchor, number in shown))
        self.assertEqual(sorted(number for _, number in shown), sorted(numbers))

    def test_rows_have_as_many_cells_as_their_heading(self):
        cells = 0
        for line in self.page.splitlines():
            if not line.startswith("|"):
                cells = 0
                continue
            count = len(re.findall(r"(?<!\\)\|", line))
            cells = cells or count
            self.assertEqual(count, cells, line)

    def test_counts_of_the_sections_add_up(self):
        counts = [int(count) for count in re.findall(r"^\| \[.*\]\(#.*\) \| (\d+) \|$", self.page, re.MULTILINE)]
        self.assertEqual(sum(counts), 608)

    def test_links_lead_somewhere(self):
        headings = {re.sub(r"[^a-z0-9-]", "", title.lower().replace(" ", "-"))
                    for title in re.findall(r"^#+ (.*)$", self.page, re.MULTILINE)}
        for target in re.findall(r"\]\(#([^)]*)\)", self.page):
            self.assertIn(target, headings)


if __name__ == "__main__":
    unittest.main()

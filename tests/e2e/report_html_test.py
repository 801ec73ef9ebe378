"""The HTML report in a browser: filters and order of the findings, nothing fetched, no complaints."""

import html.parser
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

from hls_test import MASTER, ts
from report_program import ReportTest

CHROMIUM = shutil.which("chromium") or shutil.which("chromium-browser")


class Rows(html.parser.HTMLParser):
    """The rows of the table of findings: their numbers, and whether they are hidden."""

    def __init__(self):
        super().__init__()
        self.rows = []
        self.is_in_findings = False

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        if tag == "table":
            self.is_in_findings = values.get("id") == "findings"
        if tag == "tr" and self.is_in_findings and "data-level" in values:
            self.rows.append({**values, "hidden": "hidden" in values.get("class", "")})


@unittest.skipUnless(CHROMIUM, "chromium is missing: the page isn't looked at in a browser")
class HtmlTest(ReportTest):
    def setUp(self):
        super().setUp()
        for name in ["audio", "low", "high"]:
            self.write(name + "_0.ts", ts(name.encode()))
            self.write(name + ".m3u8", b"#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n%s_0.ts\n#EXT-X-ENDLIST\n"
                       % name.encode())
        os.remove(self.path("low_0.ts"))
        self.write("master.m3u8", MASTER.replace(',NAME="n"', "").encode())
        self.run_report("-i", "master.m3u8", "-o", "out", "--report", "report.html")

    def open_page(self, fragment):
        """The page as the browser has it after its script ran."""
        address = pathlib.Path(self.path("report.html")).as_uri() + fragment
        done = subprocess.run(
            [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--user-data-dir=" + self.path("profile"), "--enable-logging=stderr", "--v=0", "--dump-dom", address],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
        errors = [line for line in done.stderr.decode(errors="replace").splitlines() if "CONSOLE" in line]
        self.assertEqual(errors, [])
        page = done.stdout.decode()
        shown = re.search(r"Showing (\d+) of (\d+)", page)
        self.assertIsNotNone(shown, done.stderr.decode(errors="replace")[-2000:])
        rows = Rows()
        rows.feed(page)
        visible = [row for row in rows.rows if not row["hidden"]]
        self.assertEqual((len(visible), len(rows.rows)), (int(shown[1]), int(shown[2])))
        return rows.rows, visible

    def test_filters_of_the_address_choose_rows(self):
        rows, visible = self.open_page("")
        self.assertEqual(rows, visible)
        levels = {row["data-level"] for row in rows}
        self.assertIn("error", levels)
        rows, visible = self.open_page("#hide=error")
        self.assertEqual({row["data-level"] for row in visible}, levels - {"error"})
        rows, visible = self.open_page("#stream=2")
        self.assertTrue(visible)
        self.assertEqual({row["data-stream"] for row in visible}, {"2"})
        rows, visible = self.open_page("#layer=HLS&text=must+NAME+4047")
        self.assertEqual(len(visible), 1)
        rows, visible = self.open_page("#text=no+such+words")
        self.assertEqual(visible, [])


if __name__ == "__main__":
    if not CHROMIUM:
        print("report_html: chromium is missing, the page isn't looked at in a browser", file=sys.stderr)
    unittest.main()

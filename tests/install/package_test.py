"""What `cmake --install` and the Debian package hold, and that the package comes out the same twice."""

import gzip
import os
import re
import shutil
import subprocess
import tempfile
import unittest

from program import CLIP, REPOSITORY, ProgramTest, output_of

BUILD = os.environ["BUILD_FOLDER"]
PROGRAMS = [os.path.basename(program) for program in os.environ["MEDIASPLIT_PROGRAMS"].split(":")]
EPOCH = 1700000000  # 14 November 2023, 22:13:20 UTC

DOCUMENTATION = ("README.md", "changelog.gz", "changelog.Debian.gz", "copyright", "docs/batch.md", "docs/findings.md",
                 "docs/findings.png", "docs/findings-schema.json", "docs/messages.md", "examples/clip.mp4")


def expected_files(zsh_folder):
    return {"bin/%s" % name for name in PROGRAMS} | \
        {"share/man/man1/%s.1.gz" % name for name in PROGRAMS} | \
        {"share/bash-completion/completions/%s" % name for name in PROGRAMS} | \
        {"%s/_%s" % (zsh_folder, name) for name in PROGRAMS} | \
        {"share/doc/mediasplit/%s" % name for name in DOCUMENTATION} | \
        {"share/mediasplit/batch/split_one.sh", "share/mediasplit/batch/merge_reports.py"}


def zsh_folder():
    with open(os.path.join(BUILD, "CMakeCache.txt"), encoding="utf-8") as cache:
        return re.search(r"^MEDIASPLIT_ZSH_FOLDER:\w+=(.*)$", cache.read(), re.MULTILINE).group(1)


class InstallTest(ProgramTest):
    def setUp(self):
        super().setUp()
        output_of("cmake", "--install", BUILD, "--prefix", self.path("usr"))

    def test_everything_is_in_its_place(self):
        found = {os.path.relpath(os.path.join(folder, name), self.path("usr"))
                 for folder, _, names in os.walk(self.path("usr")) for name in names}
        self.assertLessEqual(expected_files(zsh_folder()), found)
        for name in found:
            self.assertRegex(name, r"^(bin|share)/")

    def test_installed_program_splits_the_clip(self):
        output_of(self.path("usr", "bin", "mediasplit"), "-i", CLIP, "-o", "out", cwd=self.folder)
        self.assertEqual(self.files("out"), ["clip_track_id_1.out.264", "clip_track_id_2.out.aac"])

    def test_compressed_pages_carry_no_time(self):
        for name in PROGRAMS:
            data = self.read("usr", "share", "man", "man1", name + ".1.gz")
            self.assertEqual(data[3:8], b"\0\0\0\0\0")  # no name, no time (RFC 1952, 2.3)
            with open(os.path.join(REPOSITORY, "packaging", "man", name + ".1"), "rb") as page:
                self.assertEqual(gzip.decompress(data), page.read())

    def test_scripts_can_be_run(self):
        folder = self.path("usr", "share", "mediasplit", "batch")
        for name in os.listdir(folder):
            self.assertEqual(os.access(os.path.join(folder, name), os.X_OK), name.endswith((".sh", ".py")), name)


@unittest.skipUnless(shutil.which("dpkg-shlibdeps") and shutil.which("dpkg-deb"), "dpkg-dev isn't installed")
class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="mediasplit_package_")
        cls.addClassCleanup(shutil.rmtree, cls.folder, True)
        cls.packages = [cls.make(name) for name in ("first", "second")]
        cls.contents = output_of("dpkg-deb", "--contents", cls.packages[0])
        cls.root = os.path.join(cls.folder, "root")
        output_of("dpkg-deb", "--extract", cls.packages[0], cls.root)

    @classmethod
    def make(cls, name):
        folder = os.path.join(cls.folder, name)
        output_of("cpack", "--config", os.path.join(BUILD, "CPackConfig.cmake"), "-B", folder,
                  env=dict(os.environ, SOURCE_DATE_EPOCH=str(EPOCH)))
        found = [file for file in os.listdir(folder) if file.endswith(".deb")]
        assert len(found) == 1, found
        return os.path.join(folder, found[0])

    def field(self, name):
        return output_of("dpkg-deb", "--field", self.packages[0], name).rstrip("\n")

    def test_two_packages_of_one_build_are_the_same_bytes(self):
        first, second = self.packages
        with open(first, "rb") as one, open(second, "rb") as other:
            self.assertEqual(one.read(), other.read())

    def test_files_carry_the_time_of_the_build_and_belong_to_root(self):
        lines = self.contents.splitlines()
        self.assertGreater(len(lines), 20)
        for line in lines:
            self.assertRegex(line, r"^[-d]rw[x-]r-[x-]r-[x-] root/root ")
        for folder, _, names in os.walk(self.root):
            for name in names:
                self.assertEqual(os.stat(os.path.join(folder, name)).st_mtime, EPOCH, name)

    def test_package_holds_what_is_installed(self):
        found = set(re.findall(r" \./usr/(\S*[^/\s])$", self.contents, re.MULTILINE))
        self.assertLessEqual(expected_files(zsh_folder()), found)

    def test_dependencies_are_those_of_the_programs(self):
        depends = self.field("Depends")
        for library in ("libc6", "libcurl4", "libmbedcrypto"):
            self.assertIn(library, depends)
        self.assertNotIn("-dev", depends)

    def test_fields(self):
        self.assertEqual(self.field("Package"), "mediasplit")
        self.assertEqual(self.field("Version"), "2.0.0-1")
        self.assertEqual(self.field("Section"), "video")
        self.assertRegex(self.field("Maintainer"), r"^.+ <.+@.+>$")
        self.assertGreater(len(self.field("Description").splitlines()), 3)

    def test_licence_of_the_language_codes_is_named(self):
        with open(os.path.join(self.root, "usr/share/doc/mediasplit/copyright"), encoding="utf-8") as file:
            text = file.read()
        section = re.search(r"^Files: src/util/language_codes\.h\n(?:.+\n)+", text, re.MULTILINE).group()
        self.assertIn("License: LGPL-2.1+", section)
        self.assertIn("iso-codes", section)
        self.assertIn("/usr/share/common-licenses/LGPL-2.1", text)
        self.assertTrue(os.path.exists(os.path.join(REPOSITORY, "src", "util", "language_codes.h")))

    def test_programs_hold_no_path_of_the_build(self):
        for name in PROGRAMS:
            with open(os.path.join(self.root, "usr", "bin", name), "rb") as program:
                self.assertNotIn(REPOSITORY.encode() + b"/", program.read())

    @unittest.skipUnless(shutil.which("lintian"), "lintian isn't installed")
    def test_package_has_no_errors(self):
        done = subprocess.run(["lintian", "--fail-on", "error", "--allow-root", self.packages[0]],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)
        self.assertEqual(done.returncode, 0, done.stdout.decode())


if __name__ == "__main__":
    unittest.main()

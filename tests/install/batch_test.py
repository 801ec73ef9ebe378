"""The batch scripts, run on one machine, over a stand-in for ssh, and as the clusters would start them."""

import json
import os
import re
import shutil
import stat
import subprocess
import unittest

from program import CLIP, REPOSITORY, ProgramTest

BATCH = os.path.join(REPOSITORY, "batch")
REPORT = next((program for program in os.environ["MEDIASPLIT_PROGRAMS"].split(":")
               if program.endswith("mediasplit-report")), None)

# Does what it is told on this machine, and notes for whom. Sets the login shell, as sshd does.
SSH = """#!/usr/bin/env bash
echo "$1" >>"$HOME/machines_used"
export SHELL=/bin/sh
shift
[ "$1" != -- ] || shift
exec bash -c "$*"
"""


def missing(program):
    return shutil.which(program) is None


class BatchTest(ProgramTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("home"))
        self.environment = dict(os.environ, HOME=self.path("home"), MEDIASPLIT_REPORT=REPORT)

    def batch(self, *words, expect=0, **environment):
        done = subprocess.run([os.path.join(BATCH, words[0]), *words[1:]], cwd=self.folder, stdin=subprocess.DEVNULL,
                              env=dict(self.environment, **environment), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=120)
        self.assertEqual(done.returncode, expect, (done.stdout + done.stderr).decode())
        return done.stdout.decode()

    def text(self, *parts):
        return self.read(*parts).decode()

    def folders(self):
        """The folder of each input in `results`."""
        return {self.text("results", name, "input").rstrip("\n"): name for name in self.files("results")
                if os.path.isfile(self.path("results", name, "input"))}

    def put_inputs(self):
        os.mkdir(self.path("season one"))
        self.put_clip("film.mp4")
        self.put_clip("season one/film.mp4")
        self.write("broken.ts", b"no transport stream" * 100)
        self.write("list.txt", b"# what came in today\nfilm.mp4\n\nseason one/film.mp4\nbroken.ts\nnone.mp4\n")

    def expect_all_done(self):
        folders = self.folders()
        self.assertEqual(set(folders), {"film.mp4", "season one/film.mp4", "broken.ts", "none.mp4"})
        for name in "film.mp4", "season one/film.mp4":
            kept = folders[name]
            self.assertEqual(self.text("results", kept, "status"), "0\n")
            self.assertEqual(self.files(os.path.join("results", kept, "streams")),
                             ["film_track_id_1.out.264", "film_track_id_2.out.aac"])
            self.assertEqual(json.loads(self.text("results", kept, "report.json"))["result"], "Succeed")
            self.assertIn("Succeed to demultiplex", self.text("results", kept, "run.log"))
        self.assertEqual(self.text("results", folders["broken.ts"], "status"), "1\n")
        self.assertEqual(self.text("results", folders["none.mp4"], "status"), "1\n")
        self.assertEqual(self.files("results/.work"), [])


@unittest.skipIf(missing("parallel"), "parallel isn't installed")
class OneMachineTest(BatchTest):
    def test_list_leaves_a_folder_for_each_input(self):
        self.put_inputs()
        self.batch("split_list.sh", "list.txt", "results", expect=1, JOBS="2")
        self.expect_all_done()
        self.assertEqual(len(self.text("results", "joblog").splitlines()), 5)
        self.assertNotIn("tmp", self.files("."))

    def test_list_without_failures_succeeds(self):
        self.put_clip("film.mp4")
        self.write("list.txt", b"film.mp4\n")
        self.batch("split_list.sh", "list.txt", "results")

    def test_started_again_it_does_what_is_not_done(self):
        self.put_inputs()
        self.batch("split_list.sh", "list.txt", "results", expect=1)
        done = os.stat(self.path("results", self.folders()["film.mp4"])).st_ino
        self.put_clip("none.mp4")
        self.batch("split_list.sh", "list.txt", "results", expect=1)
        self.assertEqual(os.stat(self.path("results", self.folders()["film.mp4"])).st_ino, done)
        self.assertEqual(self.text("results", self.folders()["none.mp4"], "status"), "0\n")

    def test_names_and_options_reach_the_program_as_they_stand(self):
        name = "a 'b' $(touch trap); \"c\" & d.mp4"
        self.put_clip(name)
        self.write("list.txt", name.encode() + b"\n")
        self.batch("split_list.sh", "list.txt", "results", "--track-id", "2", "--decryption-keys", "a b;c")
        self.assertEqual(self.text("results", self.folders()[name], "status"), "0\n")
        self.assertEqual(len(self.files(os.path.join("results", self.folders()[name], "streams"))), 1)
        self.assertNotIn("trap", self.files("."))

    def test_line_beyond_the_list_is_refused(self):
        self.put_inputs()
        self.batch("split_nth.sh", "list.txt", "results", "4", expect=64)


@unittest.skipIf(missing("parallel"), "parallel isn't installed")
class SeveralMachinesTest(BatchTest):
    def test_each_machine_gets_its_part(self):
        self.put_inputs()
        self.write("ssh", SSH.encode())
        os.chmod(self.path("ssh"), stat.S_IRWXU)
        self.write("machines", "".join("1/%s %s\n" % (self.path("ssh"), host)
                                       for host in ("node1", "node2")).encode())
        self.batch("split_list.sh", "list.txt", "results", expect=1, MACHINES="machines")
        self.expect_all_done()
        self.assertEqual(set(self.text("home", "machines_used").split()), {"node1", "node2"})


class ClusterTest(BatchTest):
    def test_slurm_script_does_the_input_of_its_task(self):
        self.put_inputs()
        for task, status in ("1", 0), ("2", 1):
            self.batch("slurm_array.sh", expect=status, LIST="list.txt", RESULTS=self.path("results"),
                       MEDIASPLIT_BATCH=BATCH, SLURM_ARRAY_TASK_ID=task)
        self.assertEqual(set(self.folders()), {"season one/film.mp4", "broken.ts"})

    def test_slurm_script_needs_its_variables(self):
        self.batch("slurm_array.sh", expect=1, SLURM_ARRAY_TASK_ID="0")

    def test_slurm_options_stand_before_the_first_command(self):
        with open(os.path.join(BATCH, "slurm_array.sh"), encoding="utf-8") as script:
            lines = script.read().splitlines()
        options = [line for line in lines if line.startswith("#SBATCH")]
        first_command = next(at for at, line in enumerate(lines) if line and not line.startswith("#"))
        self.assertGreater(len(options), 3)
        self.assertTrue(all(lines.index(option) < first_command for option in options))
        for option in options:
            self.assertRegex(option, r"^#SBATCH --(job-name|cpus-per-task|mem|time|output)=\S+$")

    def manifest(self):
        try:
            import yaml
        except ImportError:
            self.skipTest("python3-yaml isn't installed")
        with open(os.path.join(BATCH, "kubernetes_job.yaml"), encoding="utf-8") as file:
            return yaml.safe_load(file)

    def test_pod_does_the_input_of_its_index(self):
        self.put_inputs()
        os.mkdir(self.path("results"))
        container = self.manifest()["spec"]["template"]["spec"]["containers"][0]
        mounts = {mount["mountPath"]: mount["name"] for mount in container["volumeMounts"]}
        self.assertEqual(mounts, {"/inputs": "inputs", "/results": "results"})
        places = {"/usr/share/mediasplit/batch": BATCH, "/inputs": self.folder, "/results": self.path("results")}
        command = [re.sub("|".join(places), lambda found: places[found.group()], word) for word in container["command"]]
        done = subprocess.run(command, cwd=places[container["workingDir"]], stdin=subprocess.DEVNULL, timeout=120,
                              env=dict(self.environment, JOB_COMPLETION_INDEX="1"))
        self.assertEqual(done.returncode, 0)
        self.assertEqual(set(self.folders()), {"season one/film.mp4"})

    def test_manifest_is_an_indexed_job(self):
        manifest = self.manifest()
        self.assertEqual((manifest["apiVersion"], manifest["kind"]), ("batch/v1", "Job"))
        spec = manifest["spec"]
        self.assertEqual(set(spec), {"completionMode", "completions", "parallelism", "backoffLimitPerIndex",
                                     "maxFailedIndexes", "template"})
        self.assertEqual(spec["completionMode"], "Indexed")
        self.assertLessEqual(spec["parallelism"], spec["completions"])
        self.assertLessEqual(spec["maxFailedIndexes"], spec["completions"])
        pod = spec["template"]["spec"]
        self.assertEqual(pod["restartPolicy"], "Never")  # what backoffLimitPerIndex asks for
        self.assertEqual({mount["name"] for mount in pod["containers"][0]["volumeMounts"]},
                         {volume["name"] for volume in pod["volumes"]})
        self.assertEqual(manifest["metadata"]["labels"], spec["template"]["metadata"]["labels"])

    @unittest.skipIf(missing("kubectl"), "kubectl isn't installed")
    def test_manifest_holds_no_field_that_kubernetes_does_not_know(self):
        done = subprocess.run(["kubectl", "label", "--local", "--dry-run=client", "-o", "json", "-f",
                               os.path.join(BATCH, "kubernetes_job.yaml"), "checked=yes"], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=60, env=dict(os.environ, HOME=self.folder))
        self.assertEqual(done.returncode, 0, done.stderr.decode())

        def fields(value, path=""):
            if isinstance(value, dict):
                return set().union(*(fields(inner, "%s.%s" % (path, key)) for key, inner in value.items()))
            if isinstance(value, list):
                return set().union(*(fields(inner, path) for inner in value))
            return {path}

        self.assertLessEqual(fields(self.manifest()), fields(json.loads(done.stdout)))

    @unittest.skipIf(missing("yamllint"), "yamllint isn't installed")
    def test_manifest_is_clean_yaml(self):
        rules = "{extends: default, rules: {line-length: {max: 120}}}"
        done = subprocess.run(["yamllint", "--strict", "-d", rules, os.path.join(BATCH, "kubernetes_job.yaml")],
                              stdout=subprocess.PIPE, timeout=60)
        self.assertEqual(done.stdout.decode(), "")


class MergeTest(BatchTest):
    def put_result(self, folder, given, status, report):
        os.makedirs(self.path("results", folder))
        self.write("results/%s/input" % folder, given.encode() + b"\n")
        self.write("results/%s/status" % folder, b"%d\n" % status)
        if report is not None:
            self.write("results/%s/report.json" % folder,
                       report if isinstance(report, bytes) else json.dumps(report).encode())

    @staticmethod
    def report(result, counts, *findings):
        return {"tool": "mediasplit", "version": "2.0.0", "result": result, "findings": [
            {"id": number, "level": level, "checkpoint": 0, "family": "general", "layer": "MP4", "stream": "",
             "element": "", "attribute": "", "text": text, "reference": "", "count": count}
            for number, level, text, count in findings],
            "streams": [{"stream": "", "outputs": [], "counts": dict(zip(("error", "warning", "info"), counts))}]}

    def merged(self):
        return json.loads(self.batch("merge_reports.py", "results"))

    def test_rules_are_summed_over_inputs(self):
        self.put_result("a", "a.mp4", 0, self.report("Succeed", (2, 1, 0), (4200, "error", "first", 3),
                                                     (4200, "error", "second", 1), (2030, "warning", "brand", 1)))
        self.put_result("b", "b b.mp4", 0, self.report("Succeed", (1, 0, 0), (4200, "error", "third", 1)))
        self.put_result("c", "c.mp4", 0, self.report("Succeed", (1, 0, 0), (4100, "error", "once", 9)))
        merged = self.merged()
        self.assertEqual(merged["runs"], 3)
        self.assertEqual(merged["failed"], [])
        self.assertEqual([(rule["id"], rule["count"], rule["inputs"], rule["example"]) for rule in merged["rules"]],
                         [(4200, 5, ["a.mp4", "b b.mp4"], "first"), (4100, 9, ["c.mp4"], "once"),
                          (2030, 1, ["a.mp4"], "brand")])
        self.assertEqual([(one["input"], one["status"], one["result"], one["counts"]) for one in merged["inputs"]][0],
                         ("a.mp4", 0, "Succeed", {"error": 2, "warning": 1, "info": 0}))

    def test_missing_and_broken_reports_are_failures(self):
        self.put_result("a", "a.mp4", 1, None)
        self.put_result("b", "b.mp4", 0, b'{"findings": [')
        self.put_result("c", "c.mp4", 1, self.report("Failed", (0, 0, 0)))
        self.put_result("d", "d.mp4", 2, self.report("Succeed", (1, 0, 0), (4100, "error", "text", 1)))
        merged = self.merged()
        self.assertEqual(merged["failed"], ["a.mp4", "b.mp4", "c.mp4"])
        self.assertEqual([one["result"] for one in merged["inputs"]], ["Failed", "Failed", "Failed", "Succeed"])

    def test_text_that_is_no_json_object_counts_as_no_report(self):
        self.put_result("a", "a.mp4", 0, b"[]")
        self.put_result("b", "b.mp4", 0, b"\xff\xfe")
        self.assertEqual(self.merged()["failed"], ["a.mp4", "b.mp4"])

    def test_names_that_are_not_utf_8_leave_the_document_valid(self):
        self.put_result("a", "a.mp4", 1, None)
        self.write("results/a/input", b"caf\xe9.mp4\n")
        self.assertEqual(self.merged()["failed"], ["caf\udce9.mp4"])

    def test_no_results_are_an_empty_document(self):
        os.mkdir(self.path("results"))
        self.assertEqual(self.merged(), {"tool": "mediasplit-report", "runs": 0, "failed": [], "inputs": [], "rules": []})

    def test_reports_of_real_runs_are_merged(self):
        self.put_inputs()
        for number, status in enumerate((0, 0, 1, 1)):
            self.batch("split_nth.sh", "list.txt", "results", str(number), expect=status)
        merged = self.merged()
        self.assertEqual(merged["runs"], 4)
        self.assertEqual(set(merged["failed"]), {"broken.ts", "none.mp4"})
        raised = {rule["id"]: rule["inputs"] for rule in merged["rules"]}
        self.assertEqual(raised[4022], ["none.mp4"])
        self.assertEqual(raised[4074], ["broken.ts"])


@unittest.skipIf(missing("shellcheck"), "shellcheck isn't installed")
class LintTest(unittest.TestCase):
    def test_scripts_are_clean(self):
        scripts = [os.path.join(folder, name) for folder in (BATCH, os.path.join(REPOSITORY, "scripts"))
                   for name in os.listdir(folder) if name.endswith(".sh")]
        self.assertGreater(len(scripts), 8)
        done = subprocess.run(["shellcheck", *scripts], stdout=subprocess.PIPE, timeout=60)
        self.assertEqual(done.stdout.decode(), "")


if __name__ == "__main__":
    unittest.main()

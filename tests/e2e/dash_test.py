"""DASH manifests from folders and addresses: status, both output streams, files, and what is left behind."""

import os
import re
import subprocess
import unittest

from inputs import initialization, segment
from program import MEDIASPLIT, ProgramTest
from scripted_server import ScriptedServer

NUMBERS = '<SegmentTemplate initialization="%s_i.mp4" media="%s_$Number$.m4s" duration="2"/>'


def representation(name, addressing=None, attributes=""):
    return '<Representation id="%s" bandwidth="1" %s>%s</Representation>' % (
        name, attributes, addressing or NUMBERS % (name, name))


def period(*representations, attributes='duration="PT4S"'):
    return "<Period %s><AdaptationSet>%s</AdaptationSet></Period>" % (attributes, "".join(representations))


def manifest(*periods, attributes=""):
    return '<?xml version="1.0"?>\n<MPD %s>%s</MPD>' % (attributes, "".join(periods))


BOTH = manifest(period(representation("a"), representation("b")))
OUTPUTS = {"stream_%s_i_track_id_1.out.data" % name: ("%s 1.%s 2." % (name, name)).encode() for name in "ab"}


class DashTest(ProgramTest):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("www"))
        for name in "ab":
            self.put(name + "_i.mp4", initialization())
            for i in 1, 2:
                self.put("%s_%d.m4s" % (name, i), segment(b"%s %d." % (name.encode(), i)))
        self.put("stream.mpd", BOTH)
        self.server = ScriptedServer(self.path("www"))
        self.server.__enter__()
        self.addCleanup(self.server.__exit__)

    def put(self, name, content):
        self.write("www/" + name, content.encode() if isinstance(content, str) else content)

    def outputs(self):
        return {name: self.read("out", name) for name in self.files("out")}

    def split(self, name, status=0, *options, **more):
        result = self.run_program("-i", name, "-o", "out", *options, **more)
        self.assertEqual(result.status, status, result.out + result.err)
        self.assertEqual(result.last_line, "%s to demultiplex %s" % ("Failed" if status else "Succeed", name))
        return result

    def split_local(self, content, status=0):
        self.put("stream.mpd", content)
        return self.split("www/stream.mpd", status)

    def split_address(self, content, status=0, *options):
        self.put("stream.mpd", content)
        return self.split(self.server.url("/stream.mpd"), status, *options)


class FolderTest(DashTest):
    def test_representations_are_split(self):
        result = self.split("www/stream.mpd")
        self.assertEqual(result.err, "")
        self.assertEqual(self.outputs(), OUTPUTS)
        self.assertEqual(self.files("."), ["out", "www"])

    def test_only_representation_prints_its_road(self):
        result = self.split_local(manifest(period(representation("a"))))
        self.assertEqual(result.err, "")
        self.assertNotIn("WARNING", result.out)
        self.assertEqual(self.outputs(), {name: data for name, data in OUTPUTS.items() if "_a_" in name})

    def test_second_run_replaces_the_files_of_the_first(self):
        self.split("www/stream.mpd")
        self.split("www/stream.mpd")
        self.assertEqual(self.outputs(), OUTPUTS)

    def test_periods_come_one_after_the_other(self):
        two = manifest(period(representation("a"), attributes='id="x" duration="PT4S"'),
                       period(representation("b"), attributes='id="y" start="PT0S" duration="PT4S"'))
        self.split_local(two)
        self.assertEqual(self.outputs(), OUTPUTS)

    def test_later_period_adds_to_the_files_of_an_earlier_one(self):
        numbers = '<BaseURL>%s/</BaseURL><SegmentTemplate initialization="i.mp4" media="$Number$.m4s" duration="2"/>'
        for folder in "p1", "p2":
            os.mkdir(self.path("www", folder))
            self.put(folder + "/i.mp4", initialization())
            for i in 1, 2:
                self.put("%s/%d.m4s" % (folder, i), segment(b"%s %d." % (folder.encode(), i)))
        for ids in "xx", "xy":
            first, second = (period(representation("a", numbers % folder), attributes='id="%s" start="PT0S" duration="PT4S"' % name)
                             for folder, name in zip(("p1", "p2"), ids))
            for _ in range(2):
                self.split_local(manifest(first, second))
                self.assertEqual(self.outputs(), {"stream_i_track_id_1.out.data": b"p1 1.p1 2.p2 1.p2 2."})

    def test_template_of_a_later_period_begins_at_its_start_in_milliseconds(self):
        two = manifest(period(representation("a"), attributes='id="x" duration="PT4S"'),
                       period(representation("b"), attributes='id="y" start="PT4S" duration="PT4S"'))
        self.split_local(two)
        self.assertEqual(list(self.outputs()), ["stream_a_i_track_id_1.out.data", "stream_b_i_track_id_1.out.data"])
        self.assertEqual(self.read("out", "stream_b_i_track_id_1.out.data"), b"")
        # 4,000 units of 2 make 2,000 segments ahead of it.
        self.put("b_2001.m4s", segment(b"b far.", 4000))
        self.split_local(two)
        self.assertEqual(self.read("out", "stream_b_i_track_id_1.out.data"), b"b far.")

    def test_missing_manifest_is_named(self):
        result = self.split("none.mpd", 1)
        self.assertEqual(result.err, "ERROR: Fail to open the file : none.mpd\n")

    def test_text_that_is_no_manifest_is_told(self):
        for content in ["", "<x/>", "MPD", b"\0" * 1000, bytes(range(256)) * 8, "<MPD/>", '{"MPD": 1}']:
            with self.subTest(content):
                result = self.split_local(content, 1)
                self.assertEqual(result.err, "ERROR: In DASH manifest, <MPD> or <Period> must be included.\n")
                self.assertEqual(self.files("out"), [])

    def test_manifest_cut_off_is_used_as_far_as_it_goes(self):
        self.split_local(BOTH[:BOTH.index('<Representation id="b"')])
        self.assertEqual(list(self.outputs()), ["stream_a_i_track_id_1.out.data"])

    def test_manifest_of_two_byte_characters_is_read(self):
        for coding in "utf-16-le", "utf-16-be":
            self.split_local(("\ufeff" + BOTH.replace('"1.0"', '"1.0" encoding="UTF-16"')).encode(coding))
            self.assertEqual(self.outputs(), OUTPUTS)

    def test_representation_without_id_or_bandwidth_fails_the_run(self):
        for attribute in "id", "bandwidth":
            text = re.sub(' %s="[^"]*"' % attribute, "", representation("a"), count=1)
            result = self.split_local(manifest(period(text, representation("b"))), 1)
            self.assertEqual(result.err, "", "findings are gathered and not printed")
            self.assertEqual(self.files("out"), [])

    def test_number_that_is_none_fails_the_run(self):
        result = self.split_local(manifest(period(representation("a", attributes='width="1920x"'))), 1)
        self.assertEqual(result.err, "")
        self.assertEqual(self.files("out"), [])

    def test_second_representation_of_an_id_is_not_played(self):
        result = self.split_local(manifest(period(representation("a"), representation("a", NUMBERS % ("b", "b")))))
        self.assertEqual(result.err, "")
        self.assertEqual(list(self.outputs()), ["stream_a_i_track_id_1.out.data"])

    def test_periods_of_one_id_are_both_played(self):
        two = manifest(period(representation("a"), attributes='id="x" duration="PT4S"'),
                       period(representation("b"), attributes='id="x" start="PT0S" duration="PT4S"'))
        result = self.split_local(two)
        self.assertEqual(result.err, "")
        self.assertEqual(self.outputs(), OUTPUTS)

    def test_missing_segment_of_a_list_ends_its_representation_only(self):
        listed = '<SegmentList><Initialization sourceURL="b_i.mp4"/><SegmentURL media="b_1.m4s"/>' \
                 '<SegmentURL media="gone.m4s"/></SegmentList>'
        result = self.split_local(manifest(period(representation("a"), representation("b", listed))), 1)
        self.assertEqual(result.err, "ERROR: Fail to get segment: www/gone.m4s\n")
        self.assertEqual(self.outputs(), dict(OUTPUTS, **{"stream_b_i_track_id_1.out.data": b"b 1."}))

    def test_closed_standard_streams_take_nothing_into_files(self):
        listed = '<SegmentList><Initialization sourceURL="a_i.mp4"/><SegmentURL media="a_1.m4s"/>' \
                 '<SegmentURL media="gone.m4s"/></SegmentList>'
        self.put("stream.mpd", manifest(period(representation("a", listed))))
        # The error line comes while the stream's file is open.
        subprocess.run(["sh", "-c", 'exec "$@" <&- >&- 2>&-', "sh", MEDIASPLIT, "-i", "www/stream.mpd", "-o", "out"],
                       cwd=self.folder, timeout=120)
        self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1."})

    def test_template_that_runs_off_its_files_warns(self):
        os.remove(self.path("www/b_2.m4s"))
        result = self.split_local(BOTH)
        self.assertEqual(result.err, "")
        self.assertEqual(self.outputs(), dict(OUTPUTS, **{"stream_b_i_track_id_1.out.data": b"b 1."}))

    def test_base_without_an_index_range_is_told(self):
        result = self.split_local(manifest(period(representation("a", "<BaseURL>a_i.mp4</BaseURL><SegmentBase/>"))), 1)
        self.assertEqual(result.err, 'ERROR: In DASH manifest, the <segmentBase> doesn\'t have the "indexRange" attribute.\n')

    def test_template_without_attributes_is_told(self):
        result = self.split_local(manifest(period(representation("a", "<SegmentTemplate/>"))), 1)
        self.assertEqual(result.err, "ERROR: In DASH manifest, calculate the BaseURL for the <segmentBase> failed.\n")

    def test_walks_without_an_end_of_their_own_end(self):
        loops = ['<SegmentTemplate initialization="a_i.mp4" media="a_1.m4s"/>',
                 '<SegmentTemplate initialization="a_i.mp4" media="a_1.m4s" duration="2"/>',
                 '<SegmentTemplate initialization="a_i.mp4" media="a_1.m4s"><SegmentTimeline>'
                 '<S d="0" r="18446744073709551615"/></SegmentTimeline></SegmentTemplate>']
        for loop in loops:
            self.split_local(manifest(period(representation("a", loop), attributes="")))
            self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1.a 1."})

    def test_entity_bombs_are_refused(self):
        entities = '<!ENTITY e0 "%s">' % ("x" * 1000)
        for i in range(1, 12):
            entities += '<!ENTITY e%d "%s">' % (i, "&e%d;" % (i - 1) * 10)
        bomb = '<!DOCTYPE MPD [%s]><MPD type="&e11;">%s</MPD>' % (entities, period(representation("a")))
        for content in [bomb, '<!DOCTYPE MPD [<!ENTITY a "&b;"><!ENTITY b "&a;">]><MPD type="&a;"/>']:
            result = self.split_local(content, 1)
            self.assertEqual(result.err, "ERROR: In DASH manifest, <MPD> or <Period> must be included.\n")

    def test_numbers_beyond_64_bits_end(self):
        huge = "9" * 40
        for attributes in ['start="PT%sS"' % huge, 'duration="PT%sH"' % huge, 'start="PT%sS" duration="P%sY"' % (huge, huge)]:
            for addressing in ['<SegmentTemplate initialization="a_i.mp4" media="a_$Number$.m4s" duration="%s" '
                               'timescale="%s" startNumber="%s"/>' % (huge, huge, huge),
                               '<SegmentTemplate initialization="a_i.mp4" media="a_$Number$.m4s" duration="1"/>']:
                self.put("stream.mpd", manifest(period(representation("a", addressing), attributes=attributes)))
                self.assertEqual(self.run_program("-i", "www/stream.mpd", "-o", "out").status, 0)

    def test_many_representations_run_at_once(self):
        names = ["r%d" % i for i in range(50)]
        for name in names:
            self.put(name + "_i.mp4", initialization())
            for i in 1, 2:
                self.put("%s_%d.m4s" % (name, i), segment(b"%s %d." % (name.encode(), i)))
        self.split_local(manifest(period(*map(representation, names))))
        self.assertEqual(self.outputs(), {"stream_%s_i_track_id_1.out.data" % name:
                                          ("%s 1.%s 2." % (name, name)).encode() for name in names})


class AddressTest(DashTest):
    LIVE = 'type="dynamic" minimumUpdatePeriod="PT1S" availabilityStartTime="2026-01-01T00:00:00Z" publishTime="%s" ' \
           'minBufferTime="PT0S"'
    ONE = period(representation("a"), attributes="")

    def test_address_gives_what_the_folder_gives(self):
        result = self.split(self.server.url("/stream.mpd"))
        self.assertEqual(result.err, "")
        self.assertEqual(self.outputs(), OUTPUTS)
        self.assertEqual(self.files("tmp"), [])
        self.assertEqual(self.server.requests.count("/stream.mpd"), 3)

    def test_base_addresses_lead_elsewhere(self):
        text = BOTH.replace("<Period", "<BaseURL>%s</BaseURL><Period" % self.server.url("/"), 1)
        self.write("local.mpd", text.encode())
        os.mkdir(self.path("tmp"))
        self.split("local.mpd")
        self.assertEqual(self.outputs(), {name.replace("stream", "local"): data for name, data in OUTPUTS.items()})
        self.assertEqual(self.files("tmp"), [])

    def test_missing_manifest_is_named(self):
        result = self.split(self.server.url("/none.mpd"), 1)
        self.assertEqual(result.err, "ERROR: Fail to fetch: %s\n" % self.server.url("/none.mpd"))
        self.assertEqual(self.files("tmp"), [])

    def test_copy_of_an_unusable_manifest_stays(self):
        result = self.split_address("<x/>", 1)
        self.assertEqual(result.err, "ERROR: In DASH manifest, <MPD> or <Period> must be included.\n")
        self.assertEqual(len(self.files("tmp")), 1)
        self.assertEqual(self.read("tmp", self.files("tmp")[0]), b"<x/>")

    def test_manifest_that_goes_away_ends_its_workers(self):
        self.server.script["/stream.mpd"] = [BOTH.encode(), 404]
        result = self.split(self.server.url("/stream.mpd"), 1)
        self.assertEqual(result.err, ("ERROR: Fail to fetch: %s\n" % self.server.url("/stream.mpd")) * 2)
        self.assertEqual(self.files("tmp"), [])

    def test_segment_is_tried_again(self):
        self.server.script["/a_2.m4s"] = [404, ("close", segment(b"a 2.")), segment(b"a 2.")]
        result = self.split_address(manifest(period(representation("a")), attributes='minBufferTime="PT1S"'))
        self.assertEqual(re.findall("Try to download segment .* failed, times : (.)", result.out), ["1", "2"])
        self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1.a 2."})
        self.assertEqual(self.files("tmp"), [])

    def test_template_segment_that_is_not_there_is_an_end(self):
        result = self.split_address(manifest(period(representation("a"), attributes=""), attributes='minBufferTime="PT1S"'))
        self.assertEqual(result.err, "")
        self.assertEqual(self.server.requests.count("/a_3.m4s"), 3)
        self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1.a 2."})
        self.assertEqual(self.files("tmp"), [])

    def test_live_manifest_is_loaded_again(self):
        self.put_short_segments()
        ones = period(representation("a", (NUMBERS % ("a", "a")).replace('"2"', '"1"')), attributes="")
        first = manifest(ones, attributes=self.LIVE % "2026-01-01T00:00:00Z")
        second = manifest(ones, attributes=self.LIVE % "2026-01-01T00:00:05Z")
        self.server.script["/stream.mpd"] = [text.encode() for text in (first, first, second)]
        result = self.split(self.server.url("/stream.mpd"), 0, "--live-duration", "2")
        self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1.a 6."})
        self.assertRegex(result.out, r"INFO: =+MANIFEST REPRESENTATION \[id: a\] UPDATE\(\d+ ms\)=+\n")
        self.assertIn("INFO: For the live streaming, the validation starts at : 2026-01-01T00:00:05Z.\n", result.out)
        self.assertEqual(self.server.requests.count("/stream.mpd"), 3)
        self.assertEqual(self.server.requests.count("/a_i.mp4"), 2)
        self.assertEqual(self.files("tmp"), [])

    def test_no_live_duration_ends_behind_one_segment(self):
        self.split_address(manifest(self.ONE, attributes=self.LIVE % "2026-01-01T00:00:00Z"), 0, "--live-duration", "0")
        self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1."})

    def put_short_segments(self):
        """Of one second, which is the time to the next update."""
        for i in range(1, 9):
            self.put("a_%d.m4s" % i, segment(b"a %d." % i, 1000))

    def test_reload_that_fails_fails_the_run(self):
        self.put_short_segments()
        live = manifest(self.ONE, attributes=self.LIVE % "2026-01-01T00:00:00Z")
        for answer, message in ((404, "Fail to fetch: " + self.server.url("/stream.mpd")),
                                (b"<x/>", "In DASH manifest, <MPD> or <Period> must be included.")):
            self.server.script["/stream.mpd"] = [live.encode(), live.encode(), answer]
            result = self.split(self.server.url("/stream.mpd"), 1)
            self.assertEqual(result.err, "ERROR: %s\n" % message)
            self.assertEqual(self.outputs(), {"stream_a_i_track_id_1.out.data": b"a 1."})
            self.assertEqual(self.files("tmp"), [])


if __name__ == "__main__":
    unittest.main()

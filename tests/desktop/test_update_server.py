"""The servers from which an update comes: what they announce, and how they send it."""

import itertools
import json
import os
import threading
import unittest

import texts
from polling import until
from release import VERSION_A, VERSION_B
from update_case import ARCHIVE, CHECK, UpdateCase
from update_server import Authority, UpdateServer, feed


class UpdateFromServers(UpdateCase):
    # The archive

    def test_an_archive_that_is_not_there_fails(self):
        self.publish(self.archive)
        self.server.answer(ARCHIVE, self.archive, status=404)
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(self.server.requests, [UpdateServer.FEED, ARCHIVE])

    def test_an_archive_that_moved_to_http_fails(self):
        plain = self.start_server(None)
        plain.answer(ARCHIVE, self.archive)
        self.publish(self.archive)
        self.server.answer(ARCHIVE, b"", status=302, Location=plain.url(ARCHIVE))
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(plain.requests, [])

    def test_an_archive_on_a_server_that_is_not_trusted_fails(self):
        os.makedirs(self.tidemark.path("stranger"))
        stranger = self.start_server(Authority(self.tidemark.path("stranger")))
        stranger.answer(ARCHIVE, self.archive)
        self.server.announce(VERSION_B, stranger.url(ARCHIVE))
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(stranger.requests, [])

    def test_an_archive_that_has_always_moved_elsewhere_fails(self):
        most = 40  # moves, more than any server needs
        self.publish(self.archive)
        self.server.answer(ARCHIVE, b"", status=302, Location=self.server.url(ARCHIVE))
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertIn(self.server.requests.count(ARCHIVE), range(2, most))

    def test_an_archive_that_does_not_end_fails(self):
        largest = 256 << 20
        block = bytes(1 << 20)
        sent = itertools.count()
        self.publish(block for _ in sent)
        self.start()
        self.accept()
        self.wait_for_failure()
        taken = next(sent) * len(block)
        self.assertGreater(taken, largest)
        self.assertLess(taken, largest * 5 // 4)

    def test_an_archive_whose_server_falls_silent_fails(self):
        silence = threading.Event()
        self.addCleanup(silence.set)

        def half():
            yield self.archive[:len(self.archive) // 2]
            silence.wait()
        self.publish(half())
        self.start()
        self.accept()
        self.wait_for_failure()
        self.assertEqual(self.server.requests, [UpdateServer.FEED, ARCHIVE])

    # The feed

    def test_a_feed_of_another_shape_announces_nothing(self):
        good = feed(VERSION_B, self.server.url(ARCHIVE))
        shapes = {
            "an array": [good],
            "a string": json.dumps(good),
            "a number": 1.10,
            "null": None,
            "an object in an object": {"feed": good},
            "no version": {"url": good["url"]},
            "no url": {"version": VERSION_B},
            "a version that is a number": good | {"version": 10},
            "a version that is null": good | {"version": None},
            "a version in an array": good | {"version": [VERSION_B]},
            "a url that is a number": good | {"url": 443},
            "a url that is an object": good | {"url": {"https": good["url"]}},
            "a url without encryption": good | {"url": good["url"].replace("https:", "http:")},
            "a url of a file": good | {"url": f"file://{self.place}/release-{VERSION_B}/update.zip"},
            "a url without a scheme": good | {"url": ARCHIVE},
            "the version that runs": good | {"version": VERSION_A},
            "the version that runs, written longer": good | {"version": f"{VERSION_A}.0"},
            "an older version": good | {"version": "1.8.99"},
            "a version of words": good | {"version": "newest"},
        }
        whole = json.dumps(good).encode()
        answers = {name: (json.dumps(content).encode(), 200) for name, content in shapes.items()} | {
            "nothing": (b"", 200),
            "a torn object": (whole[:-1], 200),
            "two objects": (whole + whole, 200),
            "another encoding": (json.dumps(good).encode("utf-16"), 200),
            "what is no text": (bytes(range(256)), 200),
            "a page that is not there": (b"<!DOCTYPE html><title>Not here</title>", 404),
            "a torn object that is not there": (whole[:-1], 404),
        }
        self.start()
        until(lambda: self.server.requests, "there was nothing new at first")
        for name, answer in answers.items():
            with self.subTest(name):
                self.server.answer(UpdateServer.FEED, *answer)
                self.check_that_nothing_is_found()
        self.assertNotIn(ARCHIVE, self.server.requests)

    def test_a_feed_counts_whatever_its_status_is(self):
        self.publish(self.archive)
        content = feed(VERSION_B, self.server.url(ARCHIVE))
        self.server.answer_feed(content, status=404)
        self.start()
        self.wait_for_alert(texts.new_version(VERSION_B, VERSION_A), "new-version")

    def test_a_feed_on_a_server_that_is_not_trusted_is_not_believed(self):
        self.publish(self.archive)
        os.makedirs(self.tidemark.path("stranger"))
        self.start(trusted=Authority(self.tidemark.path("stranger")).folder)
        self.check_that_nothing_is_found()
        self.assertEqual(self.server.requests, [])

    def test_a_feed_that_leads_to_http_announces_nothing(self):
        plain = self.start_server(None)
        plain.answer(ARCHIVE, self.archive)
        self.server.announce(VERSION_B, plain.url(ARCHIVE))
        self.start()
        self.check_that_nothing_is_found()
        self.assertEqual(self.server.requests, [UpdateServer.FEED] * 2)

    def test_a_server_that_is_not_there_announces_nothing(self):
        self.publish(self.archive)
        self.server.end()
        self.start()
        self.check_that_nothing_is_found()


if __name__ == "__main__":
    unittest.main()

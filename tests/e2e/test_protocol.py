"""The built helper over its pipes: framing, bad input, start and end. Needs no application."""

import json
import os
import subprocess
import unittest

from e2e import HELPER, HelperTest
from tarqo_client import Helper


def run_with_input(data):
    """The output lines and the exit status of a helper that is given all its input at once."""
    done = subprocess.run([HELPER], input=data, stdout=subprocess.PIPE, timeout=60, check=False)
    return done.stdout.split(b"\n"), done.returncode


class BadInput(HelperTest):
    def expect_error(self, line, code, id_=None):
        self.helper.send_bytes(line + b"\n")
        response = json.loads(self.helper.read_line())
        self.assertEqual(response["error"]["code"], code)
        self.assertEqual(response["id"], id_)
        # The loop goes on.
        self.assertIn("known", self.call("host"))

    def test_an_empty_line_is_answered(self):
        self.expect_error(b"", "native_error")

    def test_a_line_end_of_two_bytes_is_white_space(self):
        self.helper.send_bytes(b'{"id": 4, "method": "host"}\r\n')
        self.assertEqual(json.loads(self.helper.read_line())["id"], 4)

    def test_text_that_is_no_json_is_answered(self):
        self.expect_error(b"hello", "native_error")

    def test_a_zero_byte_is_answered(self):
        self.expect_error(b'{"id": 1, \x00"method": "host"}', "native_error")

    def test_bytes_that_are_no_utf8_are_repaired(self):
        self.helper.send_bytes(b'{"id": "\xff\xfe", "method": "host"}\n')
        self.assertEqual(json.loads(self.helper.read_line())["id"], "\ufffd\ufffd")

    def test_deep_nesting_is_answered(self):
        self.expect_error(b'{"id": ' + b"[" * 100000, "native_error")

    def test_an_array_is_no_request(self):
        self.expect_error(b"[1, 2]", "invalid_request")

    def test_a_very_long_line_is_served(self):
        request = {"id": 9, "method": "host", "args": {"pad": "x" * 30_000_000}}
        self.assertIn("result", self.helper.exchange(request, timeout=60))

    def test_one_byte_at_a_time_is_served(self):
        for byte in b'{"id": 5, "method": "host"}\n':
            self.helper.send_bytes(bytes([byte]))
        self.assertEqual(json.loads(self.helper.read_line())["id"], 5)

    def test_every_wrong_type_of_argument_counts_as_missing(self):
        for value in (None, True, 1, 1.5, "text", [1], {"a": 1}):
            self.assertIn("known", self.helper.exchange(
                {"id": 1, "method": "host", "args": value})["result"])
            code = self.fails("connect", bundleId=value if not isinstance(value, str) else "").code
            self.assertEqual(code, "invalid_argument")


class StartAndEnd(unittest.TestCase):
    def test_the_end_of_input_ends_the_process_after_the_last_response(self):
        lines, status = run_with_input(b'{"id": 1, "method": "host"}\n')
        self.assertEqual(status, 0)
        self.assertEqual(json.loads(lines[0])["id"], 1)
        self.assertEqual(lines[1:], [b""])

    def test_half_a_line_at_the_end_of_input_is_served(self):
        lines, status = run_with_input(b'{"id": 2, "method": "host"}')
        self.assertEqual(status, 0)
        self.assertEqual(json.loads(lines[0])["id"], 2)

    def test_close_ends_the_process_without_a_response(self):
        lines, status = run_with_input(
            b'{"id": 3, "method": "close"}\n{"id": 4, "method": "host"}\n')
        self.assertEqual((lines, status), ([b""], 0))

    def test_no_input_at_all_is_a_clean_end(self):
        self.assertEqual(run_with_input(b""), ([b""], 0))

    def test_help_is_given_when_asked_for(self):
        for argument in ("--help", "-h"):
            done = subprocess.run([HELPER, argument], capture_output=True, timeout=10, check=True)
            self.assertIn(b"usage: tarqo-ax ", done.stdout)
            self.assertEqual(done.stderr, b"")

    def test_an_unknown_argument_is_answered_with_the_usage_and_writes_no_line_of_the_protocol(self):
        done = subprocess.run([HELPER, "--port=1"], capture_output=True, timeout=10, check=False)
        self.assertEqual((done.returncode, done.stdout), (2, b""))
        self.assertIn(b"usage: tarqo-ax ", done.stderr)

    def test_the_version_is_told_and_nothing_is_served(self):
        done = subprocess.run([HELPER, "--version"], capture_output=True, timeout=10, check=True)
        self.assertRegex(done.stdout, rb"\Atarqo-ax \d+\.\d+\.\d+\n\Z")
        self.assertEqual(done.stderr, b"")

    def test_a_reader_that_goes_away_ends_the_process(self):
        process = subprocess.Popen([HELPER], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        process.stdout.close()
        process.stdin.write(b'{"method": "host"}\n' * 3)
        process.stdin.flush()
        self.assertEqual(process.wait(timeout=10), 0)
        process.stdin.close()

    def test_it_starts_and_serves_without_any_desktop(self):
        env = {"PATH": os.environ["PATH"]}
        with Helper(HELPER, env=env) as helper:
            self.assertIn("targets", helper.call("listTargets"))
            response = helper.exchange({"id": 1, "method": "preflight"})
            self.assertEqual(response["error"]["code"], "ax_not_trusted")
            self.assertEqual(response["error"]["permission"], "accessibility")


if __name__ == "__main__":
    unittest.main()

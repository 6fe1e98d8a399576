"""Two-step tokens against the published test vectors, and the tool that prints them."""

from __future__ import annotations

import base64
import unittest

from support import run_tool

from hosting import totp

SECRET = b"12345678901234567890"
# RFC 6238, appendix B, the SHA-1 rows.
VECTORS = {59: "94287082", 1111111109: "07081804", 1111111111: "14050471",
           1234567890: "89005924", 2000000000: "69279037", 20000000000: "65353130"}


class Tokens(unittest.TestCase):

    def test_vectorsOfTheStandard(self) -> None:
        made = {moment: totp.token(SECRET, moment, digits=8) for moment in VECTORS}
        self.assertEqual(made, VECTORS)

    def test_sixDigitsAreTheLastOfEight(self) -> None:
        made = {moment: totp.token(SECRET, moment) for moment in VECTORS}
        self.assertEqual(made, {moment: text[2:] for moment, text in VECTORS.items()})

    def test_oneStepEarlyOrLateIsAccepted(self) -> None:
        moment = 1234567890
        accepted = [step for step in range(-4, 5)
                    if totp.accepts(SECRET, totp.token(SECRET, moment + 30 * step), moment)]
        self.assertEqual(accepted, [-1, 0, 1])

    def test_typedTokens(self) -> None:
        for typed, accepted in (("287082", True), (" 287 082 ", True), ("287083", False),
                                ("", False), ("87082", False), ("94287082", False),
                                ("²87082", False), ("x" * 9999, False)):
            with self.subTest(typed[:20]):
                self.assertEqual(totp.accepts(SECRET, typed, 59), accepted)

    def test_secretsAsPeopleTypeThem(self) -> None:
        text = base64.b32encode(b"0123456789abc").decode()
        for typed in (text, text.rstrip("="), text.lower(), " ".join(text)):
            with self.subTest(typed):
                self.assertEqual(totp.decode_secret(typed), b"0123456789abc")
        for typed in ("1", "KF2W0", "é", "A"):
            with self.subTest(typed), self.assertRaises(ValueError):
                totp.decode_secret(typed)


class Tool(unittest.TestCase):

    def test_printsTheTokenOfAnAccountOrASecret(self) -> None:
        secret = base64.b32encode(SECRET).decode()
        for source, wanted in ((secret, "287082"), ("robin", None)):
            with self.subTest(source):
                done = run_tool("totp", source, "--at", 59)
                self.assertEqual(done.returncode, 0, done)
                self.assertRegex(done.stdout, wanted or r"^\d{6}\n$")

    def test_saysWhatIsWrong(self) -> None:
        for source, text in (("wren", "no two-step secret"), ("nobody!", "not base32")):
            with self.subTest(source):
                done = run_tool("totp", source)
                self.assertEqual((done.returncode, done.stdout), (1, ""))
                self.assertIn(text, done.stderr)


if __name__ == "__main__":
    unittest.main()

"""Certificates that a client must refuse, and one that it must not."""

from __future__ import annotations

import datetime
import ssl
from pathlib import Path
from typing import Optional, Sequence, cast

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec
from cryptography.x509.oid import ExtendedKeyUsageOID, NameOID

from harness import settings

NAMES = ("download.localhost", "account.localhost", "download-qa.localhost", "www.localhost")
DAY = datetime.timedelta(days=1)
RIGHT = "right"


def contexts(folder: Path) -> dict[str, ssl.SSLContext]:
    """A server context for each kind of certificate, by its name."""
    folder.mkdir()
    maker = _Maker(folder)
    now = datetime.datetime.now(datetime.timezone.utc)
    usual = (now - DAY, now + DAY * 30)
    made = {RIGHT: maker.context(RIGHT, NAMES, usual),
            "expired": maker.context("expired", NAMES, (now - DAY * 30, now - DAY)),
            "not yet valid": maker.context("early", NAMES, (now + DAY, now + DAY * 30)),
            "for another host": maker.context("other", ["elsewhere.localhost"], usual),
            "without a name": maker.context("nameless", [], usual),
            "for clients only": maker.context("client", NAMES, usual, is_for_servers=False),
            "of an unknown authority": maker.context("unknown", NAMES, usual, is_trusted=False),
            "signed by itself": maker.context("self", NAMES, usual, is_trusted=None),
            "right, and TLS 1.1": maker.context("old", NAMES, usual)}
    old = made["right, and TLS 1.1"]
    old.set_ciphers("ALL:@SECLEVEL=0")
    old.minimum_version = old.maximum_version = ssl.TLSVersion.TLSv1_1
    return made


class _Maker:

    def __init__(self, folder: Path) -> None:
        self._folder = folder
        self._authority = x509.load_pem_x509_certificate(settings.authority().read_bytes())
        key = serialization.load_pem_private_key(
            settings.authority().with_suffix(".key").read_bytes(), None)
        assert isinstance(key, ec.EllipticCurvePrivateKey)
        self._authority_key = key
        self._stranger = ec.generate_private_key(ec.SECP256R1())

    def context(self, name: str, names: Sequence[str],
                valid: tuple[datetime.datetime, datetime.datetime], *, is_for_servers: bool = True,
                is_trusted: Optional[bool] = True) -> ssl.SSLContext:
        """`is_trusted` is None for a certificate that is its own authority."""
        key = ec.generate_private_key(ec.SECP256R1())
        subject = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, "localhost")])
        usage = ExtendedKeyUsageOID
        purpose = usage.SERVER_AUTH if is_for_servers else usage.CLIENT_AUTH
        builder = (x509.CertificateBuilder().subject_name(subject)
                   .issuer_name(subject if is_trusted is None else self._authority.subject)
                   .public_key(key.public_key()).serial_number(x509.random_serial_number())
                   .not_valid_before(valid[0]).not_valid_after(valid[1])
                   .add_extension(x509.BasicConstraints(ca=False, path_length=None), critical=True)
                   .add_extension(x509.ExtendedKeyUsage([purpose]), critical=False))
        if names:
            builder = builder.add_extension(
                x509.SubjectAlternativeName([x509.DNSName(each) for each in names]),
                critical=False)
        signers = {True: self._authority_key, False: self._stranger, None: key}
        made = builder.sign(signers[is_trusted], hashes.SHA256())
        file = self._folder / f"{name}.pem"
        writable = cast(ec.EllipticCurvePrivateKeyWithSerialization, key)
        file.write_bytes(made.public_bytes(serialization.Encoding.PEM) + writable.private_bytes(
            serialization.Encoding.PEM, serialization.PrivateFormat.PKCS8,
            serialization.NoEncryption()))
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(file)
        return context

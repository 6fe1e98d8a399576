"""The certificate authority of the local hosts and the server certificate."""

from __future__ import annotations

import datetime
import ipaddress
import json
import os
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Sequence, cast

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec
from cryptography.x509.oid import ExtendedKeyUsageOID, NameOID

from .names import DOMAIN

AUTHORITY_DAYS = 3650
SERVER_DAYS = 397
RENEW_DAYS = 30
LOOPBACK = ("127.0.0.0/8", "::1/128")


@dataclass(frozen=True)
class Certificates:
    """Files that a server and its clients need."""

    authority: Path
    chain: Path
    key: Path


def ensure(folder: Path, names: Sequence[str]) -> Certificates:
    """Makes what is missing; the authority stays, since clients have it built in."""
    authority, authority_key = folder / "ca.pem", folder / "ca.key"
    if not (authority.exists() and authority_key.exists()):
        _make_authority(authority, authority_key)
    files = Certificates(authority, folder / "server.pem", folder / "server.key")
    note = folder / "server.json"
    if not _still_good(files, note, names):
        _make_server(files, authority_key, note, names)
    return files


def _make_authority(certificate: Path, key_file: Path) -> None:
    key = ec.generate_private_key(ec.SECP256R1())
    name = _name("Quellmoor local hosts")
    # The constraint keeps a stolen key worthless outside of the machine it is on.
    networks = [x509.IPAddress(ipaddress.ip_network(block)) for block in LOOPBACK]
    constraint = x509.NameConstraints([x509.DNSName(DOMAIN), *networks], None)
    made = (_builder(name, name, key, AUTHORITY_DAYS)
            .add_extension(x509.BasicConstraints(ca=True, path_length=0), critical=True)
            .add_extension(_usage(authority=True), critical=True)
            .add_extension(constraint, critical=True)
            .add_extension(_identifier(key), critical=False)
            .sign(key, hashes.SHA256()))
    _save_key(key_file, key)
    _save(certificate, made.public_bytes(serialization.Encoding.PEM), 0o644)


def _make_server(files: Certificates, authority_key: Path, note: Path,
                 names: Sequence[str]) -> None:
    authority = x509.load_pem_x509_certificate(files.authority.read_bytes())
    signer = serialization.load_pem_private_key(authority_key.read_bytes(), None)
    key = ec.generate_private_key(ec.SECP256R1())
    addresses = [x509.IPAddress(ipaddress.ip_address(text)) for text in ("127.0.0.1", "::1")]
    listed = [x509.DNSName(name) for name in names]
    made = (_builder(_name(DOMAIN), authority.subject, key, SERVER_DAYS)
            .add_extension(x509.BasicConstraints(ca=False, path_length=None), critical=True)
            .add_extension(_usage(authority=False), critical=True)
            .add_extension(x509.ExtendedKeyUsage([ExtendedKeyUsageOID.SERVER_AUTH]),
                           critical=False)
            .add_extension(x509.SubjectAlternativeName([*listed, *addresses]), critical=False)
            .add_extension(_identifier(key), critical=False)
            .add_extension(x509.AuthorityKeyIdentifier.from_issuer_public_key(
                authority.public_key()), critical=False)
            .sign(signer, hashes.SHA256()))
    _save_key(files.key, key)
    _save(files.chain, made.public_bytes(serialization.Encoding.PEM), 0o644)
    _save(note, json.dumps(_description(files, names)).encode(), 0o644)


def _still_good(files: Certificates, note: Path, names: Sequence[str]) -> bool:
    try:
        known = json.loads(note.read_bytes())
        until = datetime.date.fromisoformat(known["until"])
    except (OSError, ValueError, KeyError, TypeError):
        return False
    margin = datetime.timedelta(days=RENEW_DAYS)
    return (files.chain.exists() and files.key.exists()
            and until - margin > _today().date()
            and {**known, "until": ""} == {**_description(files, names), "until": ""})


def _description(files: Certificates, names: Sequence[str]) -> dict[str, Any]:
    until = _today() + datetime.timedelta(days=SERVER_DAYS)
    return {"names": sorted(names), "until": until.date().isoformat(),
            "authority": files.authority.read_text()}


def _builder(subject: x509.Name, issuer: x509.Name, key: ec.EllipticCurvePrivateKey,
             days: int) -> x509.CertificateBuilder:
    # A day back, for machines whose clocks do not quite agree.
    start = _today() - datetime.timedelta(days=1)
    return (x509.CertificateBuilder().subject_name(subject).issuer_name(issuer)
            .public_key(key.public_key()).serial_number(x509.random_serial_number())
            .not_valid_before(start)
            .not_valid_after(start + datetime.timedelta(days=days)))


def _usage(authority: bool) -> x509.KeyUsage:
    return x509.KeyUsage(
        digital_signature=not authority, content_commitment=False, key_encipherment=False,
        data_encipherment=False, key_agreement=False, key_cert_sign=authority,
        crl_sign=authority, encipher_only=False, decipher_only=False)


def _identifier(key: ec.EllipticCurvePrivateKey) -> x509.SubjectKeyIdentifier:
    return x509.SubjectKeyIdentifier.from_public_key(key.public_key())


def _name(text: str) -> x509.Name:
    return x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, text)])


def _today() -> datetime.datetime:
    return datetime.datetime.now(datetime.timezone.utc)


def _save_key(path: Path, key: ec.EllipticCurvePrivateKey) -> None:
    writable = cast(ec.EllipticCurvePrivateKeyWithSerialization, key)
    _save(path, writable.private_bytes(serialization.Encoding.PEM,
                                       serialization.PrivateFormat.PKCS8,
                                       serialization.NoEncryption()), 0o600)


def _save(path: Path, content: bytes, mode: int) -> None:
    staged = path.with_name(path.name + ".new")
    staged.unlink(missing_ok=True)
    handle = os.open(staged, os.O_WRONLY | os.O_CREAT | os.O_EXCL, mode)
    with open(handle, "wb") as stream:
        stream.write(content)
    os.replace(staged, path)

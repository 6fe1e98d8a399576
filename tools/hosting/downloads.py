"""The download hosts: files below a tree, and the launcher's installers."""

from __future__ import annotations

import email.utils
import os
import re
import stat
from pathlib import Path
from typing import Mapping, Optional
from urllib.parse import unquote_to_bytes

from .messages import FileBody, Request, Response, text_response
from .names import DOWNLOAD, download_host
from .pages import not_found

INSTALLER = re.compile(r"/VARNO_darwin_setup_(?P<version>[^/]+)\.dmg")
PRIVATE = b".publish-"
KINDS = {".json": "application/json", ".bz2": "application/x-bzip2",
         ".dmg": "application/x-apple-diskimage"}


class Downloads:
    """Serves each download host from its own tree."""

    def __init__(self, tree: Optional[Path], environments: Mapping[str, Path],
                 installers: Optional[Path]) -> None:
        self._trees = {download_host(name): path for name, path in environments.items()}
        if tree is not None:
            self._trees[DOWNLOAD] = tree
        self._installers = installers

    def answer(self, request: Request) -> Response:
        if request.method not in ("GET", "HEAD"):
            return text_response(405, "Only GET and HEAD.\n", "text/plain",
                                 {"Allow": "GET, HEAD"})
        relative = relative_path(request.path)
        if relative is None:
            return not_found(request)
        root = self._trees.get(request.host)
        installer = INSTALLER.fullmatch(request.path) and request.host == DOWNLOAD
        if installer and self._installers is not None:
            root = self._installers
        found = root and file_response(root, relative)
        if not found and installer and self._installers is None:
            return _made_up_installer(request.path)
        return found or not_found(request)


def relative_path(path: str) -> Optional[bytes]:
    """The path below a tree; None for one that is not clean or would leave it."""
    decoded = unquote_to_bytes(path)
    parts = decoded.split(b"/")
    clean = (parts[0] == b"" and b"\0" not in decoded
             and not any(part in (b"", b".", b"..") for part in parts[1:])
             and not parts[-1].startswith(PRIVATE))
    return decoded[1:] if clean else None


def file_response(root: Path, relative: bytes) -> Optional[Response]:
    """A regular file below the root, also behind links as long as they stay there."""
    top = os.path.realpath(os.fsencode(root))
    path = os.path.realpath(os.path.join(top, relative))
    if not path.startswith(os.path.join(top, b"")):
        return None
    try:
        stream = open(path, "rb", opener=_open_at_once)
    except OSError:
        return None
    about = os.fstat(stream.fileno())
    if not stat.S_ISREG(about.st_mode):
        stream.close()
        return None
    kind = KINDS.get(os.path.splitext(os.fsdecode(relative))[1], "application/octet-stream")
    return Response(200, FileBody(stream), {
        "Content-Type": kind,
        "Last-Modified": email.utils.formatdate(about.st_mtime, usegmt=True)})


def _open_at_once(path: str, flags: int) -> int:
    # A named pipe in the tree must not hold up the thread.
    return os.open(path, flags | os.O_NONBLOCK | os.O_CLOEXEC)


def _made_up_installer(path: str) -> Response:
    text = f"A stand-in for the installer {path[1:]}.\n" * 200
    return text_response(200, text, KINDS[".dmg"])

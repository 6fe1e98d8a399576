"""A network and a mount table of the test's own, so that tests never meet and none gets out."""

from __future__ import annotations

import ctypes
import fcntl
import os
import signal
import socket
import struct
import subprocess
import sys

ENTERED = "QUELLMOOR_TEST_IS_ISOLATED"
READ_FLAGS, WRITE_FLAGS = 0x8913, 0x8914
INTERFACE_UP = 1
DIE_WITH_PARENT = 1


def enter() -> None:
    """Starts this program again inside; where that is not allowed, it stays outside."""
    # In the background of a script it would be ignored, by the launcher, too.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    if os.environ.get(ENTERED):
        _bring_up_loopback()
        return
    rights = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
    inside = ["unshare", *rights, "--net", "--mount", "--"]
    if subprocess.run([*inside, "true"], capture_output=True, check=False).returncode != 0:
        print("No namespaces here: tests share this machine's ports and cannot mount.",
              file=sys.stderr)
        return
    command = [*inside, sys.executable, *sys.argv]
    os.execvpe(command[0], command, {**os.environ, ENTERED: "1"})


def die_with_parent() -> None:
    """For a child: a test that is killed leaves no process behind."""
    ctypes.CDLL(None).prctl(DIE_WITH_PARENT, signal.SIGKILL)


def mount(*arguments: str) -> None:
    """Mounts in the mount table of this test; it goes with the test."""
    done = subprocess.run(["mount", *arguments], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"mount {' '.join(arguments)}: {done.stderr}"
                           "These tests need a mount namespace.")


def unmount(place: str) -> None:
    subprocess.run(["umount", "--lazy", place], check=True)


def _bring_up_loopback() -> None:
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        asked = bytearray(struct.pack("16sh14x", b"lo", 0))
        fcntl.ioctl(any_socket, READ_FLAGS, asked)
        flags = struct.unpack("16sh14x", asked)[1]
        fcntl.ioctl(any_socket, WRITE_FLAGS,
                    struct.pack("16sh14x", b"lo", flags | INTERFACE_UP))

"""What a game can do between its start and its end."""

from __future__ import annotations

# What is done, and the script that the game then is. $MARK is a file that it may make.
SCRIPTS: tuple[tuple[str, str], ...] = (
    ("it ends at once", ": >$MARK"),
    ("it ends with exit code 1", ": >$MARK; exit 1"),
    ("it ends with exit code 255", ": >$MARK; exit 255"),
    ("it is killed", ": >$MARK; kill -KILL $$"),
    ("it crashes", ": >$MARK; kill -SEGV $$"),
    ("it aborts", ": >$MARK; kill -ABRT $$"),
    ("it is interrupted", ": >$MARK; kill -INT $$"),
    ("it closes its streams", ": >$MARK; exec <&- >&- 2>&-; exit 0"),
    ("it prints a megabyte", ": >$MARK; head -c 1000000 /dev/zero"),
    ("it prints noise on its errors", ": >$MARK; head -c 100000 /dev/urandom >&2"),
    ("it leaves a child behind", ": >$MARK; (exec sleep 300) & exit 0"),
    ("it leaves a child with its streams closed",
     ": >$MARK; setsid sleep 300 >&- 2>&- <&- & exit 0"),
    ("it kills its shell", ": >$MARK; kill -KILL $PPID"),
    ("it removes its own file", ": >$MARK; rm -f Quellmoor"),
    ("it damages a game file", ": >$MARK; echo no >>data/deep/good\\ 2.bin"),
    ("it removes a folder of the game", ": >$MARK; rm -rf data"),
    ("it makes its file unreadable", ": >$MARK; chmod 0 Quellmoor"),
    ("it puts a link in its place", ": >$MARK; ln -sf /bin/false Quellmoor"),
    ("it changes the manifest's folder", ": >$MARK; mkdir -p saves; echo mine >saves/one"),
    ("it uses the folder of temporary files",
     ": >$MARK; for n in 1 2 3 4 5; do : >$TMPDIR/g$n; done; rm $TMPDIR/g*"),
    ("it is started anew by itself", ": >$MARK; sh -c ':'; exec true"),
)

# Names of executables in the manifest that cannot be started, and how the log tells.
EXECUTABLES: tuple[tuple[str, object], ...] = (
    ("an executable that is missing", "Missing"),
    ("an executable that is a data file", "data/good 1.bin"),
    ("an executable that is empty", "empty.bin"),
    ("an executable that is a folder", "data"),
    ("an executable outside of the game", "../../canary"),
    ("an executable by its full path", "/bin/touch"),
    ("an executable without a name", ""),
    ("an executable with a NUL", "a\0b"),
    ("an executable that is the folder itself", "."),
    ("an executable of 10,000 letters", "n" * 10_000),
)

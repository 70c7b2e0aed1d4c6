"""Windows programs under wine, for the tools that compare them with those of Linux."""
import os
import pathlib
import shutil
import subprocess

WINE = next((w for w in ("/usr/lib/wine/wine64", shutil.which("wine64"), shutil.which("wine"))
             if w and os.access(w, os.X_OK)), None)
SERVER = WINE and (WINE + "server" if os.access(WINE + "server", os.X_OK) else "/usr/lib/wine/wineserver64")


def environment(prefix):
    """Of both systems' programs alike; `prefix` is the folder of wine's own files."""
    own = {name: value for name, value in os.environ.items() if not name.startswith("NORV_") and name != "DISPLAY"}
    return own | {"WINEPREFIX": str(prefix), "WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml=", "LC_ALL": "C.UTF-8"}


def begin(prefix):
    """Makes wine's own files where there are none."""
    if not (pathlib.Path(prefix) / "system.reg").exists():
        pathlib.Path(prefix).mkdir(parents=True, exist_ok=True)
        subprocess.run([WINE, "wineboot", "-i"], env=environment(prefix), stdin=subprocess.DEVNULL, timeout=300)


def end(prefix):
    subprocess.run([SERVER, "-k"], env=environment(prefix))


def lines_of(stream):
    """What a program said, without wine's own words and with this system's line ends."""
    lines = stream.replace(b"\r\n", b"\n").split(b"\n")
    return b"\n".join(line for line in lines if not line.startswith((b"wine: ", b"wine client error:")))

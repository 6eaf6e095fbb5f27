"""Programs that see mounts which nobody else does, for which no rights are needed."""

import os
import subprocess

# Mounts "what:where" in place of "where" for each argument up to "--"; makes "where" read-only if there is no "what", and an
# empty disk of that many bytes if it is a number.
_MOUNT = """
set -e
while [ "$1" != -- ]; do
    what=${1%%:*} where=${1#*:}
    case "$what" in
    "") mount --rbind "$where" "$where" && mount -o remount,bind,ro "$where" ;;
    [0-9]*) mount -t tmpfs -o "size=$what" tmpfs "$where" ;;
    *) mount --rbind "$what" "$where" ;;
    esac
    shift
done
shift
"""


def launcher(mounts):
    """The command that starts another one, whose process becomes that one's.

    `mounts` has pairs of a folder and the place at which it is mounted. With None instead of a folder the place becomes
    read-only as it is, with a number an empty disk that has room for so many bytes.
    """
    pairs = [f"{'' if what is None else what}:{where}" for what, where in mounts]
    if os.geteuid() == 0:
        return ["unshare", "-m", "sh", "-c", _MOUNT + 'exec "$@"', "sh", *pairs, "--"]
    # Only its own root may mount; then the user is the user again, also for the session bus.
    back = f'exec unshare -U --map-user={os.geteuid()} --map-group={os.getegid()} -- "$@"'
    return ["unshare", "-Urm", "sh", "-c", _MOUNT + back, "sh", *pairs, "--"]


def are_possible():
    """They are not where the kernel or a container refuses them."""
    command = [*launcher([("/etc", "/etc")]), "true"]
    return subprocess.run(command, capture_output=True, check=False).returncode == 0

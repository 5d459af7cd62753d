#!/bin/sh
# Fernhollow in one file. The folder that it is unpacked into is deleted when the program ends.
set -eu
APPIMAGE=$(readlink -f "$0")
APPDIR=$(mktemp -d "${TMPDIR:-/tmp}/fernhollow.XXXXXX")
export APPIMAGE APPDIR
if ! tail -n +@ARCHIVE_LINE@ "$APPIMAGE" | tar -xz -C "$APPDIR"; then
    rm -rf "$APPDIR"
    exit 1
fi
(
    trap "" HUP INT TERM
    tail --pid=$$ -f /dev/null
    rm -rf "$APPDIR"
) </dev/null >/dev/null 2>&1 &
exec "$APPDIR/AppRun" "$@"
exit 1 # what follows is the archive

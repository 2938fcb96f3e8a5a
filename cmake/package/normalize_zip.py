"""Rewrites a ZIP archive so that it only depends on names, modes and contents: normalize_zip.py FILE

Entries are sorted. All have the same time: SOURCE_DATE_EPOCH (UTC), or the earliest time that the format supports. Owners and
access times are removed.
"""

import os
import sys
import time
import zipfile


def entry_time():
    earliest = (1980, 1, 1, 0, 0, 0)
    text = os.environ.get("SOURCE_DATE_EPOCH", "")
    if not text:
        return earliest
    if not text.isdigit():
        sys.exit(f"error: SOURCE_DATE_EPOCH is not a number of seconds since 1970: '{text}'")
    return max(earliest, time.gmtime(int(text))[:6])


def normalize(source, target, when):
    for old in sorted(source.infolist(), key=lambda entry: entry.filename):
        new = zipfile.ZipInfo(old.filename, when)
        new.create_system = 3  # the modes below are those of Unix
        new.external_attr = old.external_attr
        new.compress_type = zipfile.ZIP_STORED if old.is_dir() else zipfile.ZIP_DEFLATED
        target.writestr(new, source.read(old), compresslevel=9)


def main(file):
    when = entry_time()
    partial = file + ".partial"
    with zipfile.ZipFile(file) as source, zipfile.ZipFile(partial, "w") as target:
        normalize(source, target, when)
    os.replace(partial, file)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: normalize_zip.py FILE")
    main(sys.argv[1])

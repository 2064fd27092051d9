#!/usr/bin/env python3
"""Burns subtitles into raw video: packed RGB frames come from standard input and go to standard output.

Needs nothing but Python and the library.
"""

import argparse
import ctypes
import fractions
import os
import sys


class Picture(ctypes.Structure):
    """AVPicture of libsubtitle.h."""

    _fields_ = [("data", ctypes.c_void_p * 8), ("linesize", ctypes.c_int * 8)]


def load(name):
    """Loads the library and declares what this host calls: otherwise ctypes truncates pointers to int."""
    library = ctypes.CDLL(name)
    library.CreateVideoSubtitle.argtypes = [ctypes.c_int, ctypes.c_int]
    library.CreateVideoSubtitle.restype = ctypes.c_void_p
    library.DestroyVideoSubtitle.argtypes = [ctypes.c_void_p]
    library.DestroyVideoSubtitle.restype = None
    library.SetSubtitleFile.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    library.SetSubtitleFile.restype = ctypes.c_int
    library.SetSubtitleTimeStamp.argtypes = [ctypes.c_void_p, ctypes.c_long]
    library.SetSubtitleTimeStamp.restype = ctypes.c_int
    library.ProcessSubtitleFrame.argtypes = [ctypes.c_void_p, ctypes.POINTER(Picture)]
    library.ProcessSubtitleFrame.restype = ctypes.c_int
    return library


def read_frame(stream, pixels):
    """Reads a frame into the pixels. Returns False at the end of the input."""
    have = stream.readinto(pixels)
    if 0 < have < len(pixels):
        raise EOFError("standard input ends within a frame")
    return have > 0


def burn(library, handle, size, rate):
    """Burns subtitles into all frames of the input."""
    width, height = size
    pixels = bytearray(3 * width * height)
    memory = (ctypes.c_ubyte * len(pixels)).from_buffer(pixels)
    frame = Picture()
    frame.data[0] = ctypes.addressof(memory)
    frame.linesize[0] = 3 * width
    number = 0
    while read_frame(sys.stdin.buffer, pixels):
        milliseconds = int(number * 1000 / rate + fractions.Fraction(1, 2))
        if library.SetSubtitleTimeStamp(handle, milliseconds) != 0:
            raise MemoryError("no memory for a subtitle")
        if library.ProcessSubtitleFrame(handle, ctypes.byref(frame)) != 0:
            raise MemoryError("no memory for a subtitle")
        sys.stdout.buffer.write(pixels)
        number += 1
    sys.stdout.buffer.flush()


def size_of(text):
    """Parses the argument WIDTHxHEIGHT."""
    width, height = (int(number) for number in text.split("x"))
    if width < 1 or height < 1:
        raise ValueError(text)
    return width, height


def rate_of(text):
    """Parses the argument RATE."""
    numerator, _, denominator = text.partition("/")
    if int(numerator) < 1 or int(denominator or 1) < 1:
        raise ValueError(text)
    return fractions.Fraction(int(numerator), int(denominator or 1))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", default="libsubtitle.so.1", help="file of the library")
    parser.add_argument("size", type=size_of, metavar="WIDTHxHEIGHT")
    parser.add_argument("rate", type=rate_of, metavar="RATE", help="frames per second, such as 25 or 30000/1001")
    parser.add_argument("subtitles", metavar="SUBTITLES")
    options = parser.parse_args()
    library = load(options.library)
    # Checked here because the library accepts a missing file as one without subtitles.
    with open(options.subtitles, "rb"):
        pass
    handle = library.CreateVideoSubtitle(*options.size)
    if not handle:
        raise MemoryError("no memory for a handle")
    try:
        if library.SetSubtitleFile(handle, os.fsencode(options.subtitles), 0) != 0:
            raise ValueError("the subtitle file is refused")
        burn(library, handle, options.size, options.rate)
    finally:
        library.DestroyVideoSubtitle(handle)


if __name__ == "__main__":
    try:
        main()
    except (OSError, EOFError, MemoryError, ValueError) as error:
        sys.exit(f"ctypeshost.py: {error}")

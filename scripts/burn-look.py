#!/usr/bin/env python3
"""Burns a subtitle into one raw frame of rgb24 from standard input, and writes it to standard output.

usage: burn-look.py LIBRARY SUBTITLES MILLISECONDS WIDTH HEIGHT LOOK
LIBRARY is the file of libsubtitleframe. LOOK is "exact" or "natural".
"""
import ctypes
import sys


class SubtitleFrame(ctypes.Structure):
    """As in libsubtitleframe.h."""

    _fields_ = [("data", ctypes.c_void_p * 4), ("linesize", ctypes.c_int * 4), ("width", ctypes.c_int),
                ("height", ctypes.c_int), ("format", ctypes.c_int), ("colorspace", ctypes.c_int),
                ("color_range", ctypes.c_int), ("color_primaries", ctypes.c_int), ("color_trc", ctypes.c_int),
                ("chroma_location", ctypes.c_int), ("interlaced", ctypes.c_int), ("orientation", ctypes.c_int)]


def main():
    library = ctypes.CDLL(sys.argv[1])
    for function in (library.CreateVideoSubtitle, library.CreateSubtitleBurner):
        function.restype = ctypes.c_void_p
    milliseconds, width, height = map(int, sys.argv[3:6])
    pixels = bytearray(sys.stdin.buffer.read(width * height * 3))
    if len(pixels) != width * height * 3:
        sys.exit("burn-look.py: standard input ends within the frame")
    frame = SubtitleFrame(width=width, height=height, format=library.SubtitlePixelFormat(b"rgb24"))
    frame.data[0] = ctypes.addressof(ctypes.c_char.from_buffer(pixels))
    frame.linesize[0] = width * 3

    handle = ctypes.c_void_p(library.CreateVideoSubtitle(width, height))
    burner = ctypes.c_void_p(library.CreateSubtitleBurner(handle))
    library.SetSubtitleBurnerLook(burner, ("exact", "natural").index(sys.argv[6]))
    if library.SetSubtitleFile(handle, sys.argv[2].encode(), 0) != 0:
        sys.exit(f"burn-look.py: {sys.argv[2]}: cannot be read")
    library.SetSubtitleTimeStamp(handle, ctypes.c_long(milliseconds))
    if library.BurnSubtitle(burner, ctypes.byref(frame)) != 0:
        sys.exit("burn-look.py: the frame was refused")
    sys.stdout.buffer.write(pixels)


main()

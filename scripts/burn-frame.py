#!/usr/bin/env python3
"""Burns a subtitle into one raw frame of yuv420p10le from standard input, and writes it to standard output.

usage: burn-frame.py LIBRARY SUBTITLES MILLISECONDS WIDTH HEIGHT TRANSFER
LIBRARY is the file of libsubtitleframe. TRANSFER is the frame's color_trc, 16 for PQ or 0 for unspecified.
"""
import ctypes
import sys


class SubtitleFrame(ctypes.Structure):
    """As in libsubtitleframe.h."""

    _fields_ = [("data", ctypes.c_void_p * 4), ("linesize", ctypes.c_int * 4), ("width", ctypes.c_int),
                ("height", ctypes.c_int), ("format", ctypes.c_int), ("colorspace", ctypes.c_int),
                ("color_range", ctypes.c_int), ("color_primaries", ctypes.c_int), ("color_trc", ctypes.c_int),
                ("chroma_location", ctypes.c_int), ("interlaced", ctypes.c_int), ("orientation", ctypes.c_int)]


def load(name):
    """Loads libsubtitleframe and with it libsubtitle, which it depends on."""
    library = ctypes.CDLL(name)
    for function in (library.CreateVideoSubtitle, library.CreateSubtitleBurner):
        function.restype = ctypes.c_void_p
    library.CreateSubtitleBurner.argtypes = [ctypes.c_void_p]
    library.SetSubtitleFile.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]
    library.SetSubtitleTimeStamp.argtypes = [ctypes.c_void_p, ctypes.c_long]
    library.BurnSubtitle.argtypes = [ctypes.c_void_p, ctypes.POINTER(SubtitleFrame)]
    return library


def main():
    library = load(sys.argv[1])
    milliseconds, width, height, transfer = map(int, sys.argv[3:])
    pixels = bytearray(sys.stdin.buffer.read(width * height * 3))
    if len(pixels) != width * height * 3:
        sys.exit("burn-frame.py: standard input ends within the frame")
    start = ctypes.addressof(ctypes.c_char.from_buffer(pixels))
    luma = width * height * 2
    frame = SubtitleFrame(width=width, height=height, format=library.SubtitlePixelFormat(b"yuv420p10le"),
                          colorspace=9, color_range=1, color_primaries=9, color_trc=transfer, chroma_location=1)
    frame.data[:3] = start, start + luma, start + luma * 5 // 4
    frame.linesize[:3] = width * 2, width, width

    handle = library.CreateVideoSubtitle(width, height)
    burner = library.CreateSubtitleBurner(handle)
    if library.SetSubtitleFile(handle, sys.argv[2].encode(), 0) != 0:
        sys.exit(f"burn-frame.py: {sys.argv[2]}: cannot be read")
    library.SetSubtitleTimeStamp(handle, milliseconds)
    if library.BurnSubtitle(burner, ctypes.byref(frame)) != 0:
        sys.exit("burn-frame.py: the frame was refused")
    sys.stdout.buffer.write(pixels)


main()

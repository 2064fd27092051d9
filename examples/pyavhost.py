#!/usr/bin/env python3
"""Burns subtitles into a video with PyAV: decodes it, draws into the decoder's own frames, and encodes them.

Needs PyAV and the libraries libsubtitle and libsubtitleframe. Written for PyAV 10, which does not know a frame's chroma
position nor whether a film is stored turned: these are taken as the usual.
"""

import argparse
import contextlib
import ctypes
import fractions
import math
import os
import sys

import av
import av.filter


class SubtitleFrame(ctypes.Structure):
    """SubtitleFrame of libsubtitleframe.h."""

    _fields_ = [
        ("data", ctypes.c_void_p * 4),
        ("linesize", ctypes.c_int * 4),
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
        ("format", ctypes.c_int),
        ("colorspace", ctypes.c_int),
        ("color_range", ctypes.c_int),
        ("color_primaries", ctypes.c_int),
        ("color_trc", ctypes.c_int),
        ("chroma_location", ctypes.c_int),
        ("interlaced", ctypes.c_int),
        ("orientation", ctypes.c_int),
    ]


def load(name):
    """Loads the libraries; one handle finds the functions of both, since the one for frames needs the other."""
    library = ctypes.CDLL(name)
    for function, result, arguments in (
        ("CreateVideoSubtitle", ctypes.c_void_p, [ctypes.c_int, ctypes.c_int]),
        ("DestroyVideoSubtitle", None, [ctypes.c_void_p]),
        ("SetSubtitleFile", ctypes.c_int, [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int]),
        ("SetSubtitleTimeStamp", ctypes.c_int, [ctypes.c_void_p, ctypes.c_long]),
        ("SubtitlePixelFormat", ctypes.c_int, [ctypes.c_char_p]),
        ("CreateSubtitleBurner", ctypes.c_void_p, [ctypes.c_void_p]),
        ("DestroySubtitleBurner", None, [ctypes.c_void_p]),
        ("BurnSubtitle", ctypes.c_int, [ctypes.c_void_p, ctypes.POINTER(SubtitleFrame)]),
    ):
        getattr(library, function).restype = result
        getattr(library, function).argtypes = arguments
    return library


def describe(library, frame):
    """The record of a frame of PyAV's: its planes where they are."""
    record = SubtitleFrame()
    for number, plane in enumerate(frame.planes):
        record.data[number] = plane.buffer_ptr
        record.linesize[number] = plane.line_size
    record.width = frame.width
    record.height = frame.height
    record.format = library.SubtitlePixelFormat(frame.format.name.encode())
    # PyAV 10 does not have them; 0 is "not known".
    record.colorspace = int(getattr(frame, "colorspace", 0))
    record.color_range = int(getattr(frame, "color_range", 0))
    record.interlaced = frame.interlaced_frame
    return record


class Burner:
    """Draws into frames of one size and format."""

    def __init__(self, library, subtitles, stream):
        self.library = library
        self.burner = None
        context = stream.codec_context
        self.handle = library.CreateVideoSubtitle(context.width, context.height)
        if not self.handle:
            raise MemoryError("no memory for a handle")
        if library.SetSubtitleFile(self.handle, os.fsencode(subtitles), 0) != 0:
            self.close()
            raise ValueError("the subtitle file is refused")
        self.burner = library.CreateSubtitleBurner(self.handle)
        # PyAV 10 cannot make a frame writable, but a filter of FFmpeg's can: it copies a frame that others still hold
        # and hands on any other as it is.
        self.graph = av.filter.Graph()
        source = self.graph.add_buffer(template=stream)
        writable = self.graph.add("perms", "mode=rw")
        sink = self.graph.add("buffersink")
        source.link_to(writable)
        writable.link_to(sink)
        self.graph.configure()

    def close(self):
        self.library.DestroySubtitleBurner(self.burner)
        self.library.DestroyVideoSubtitle(self.handle)

    def burn(self, frames, milliseconds):
        """Takes the first frame out of a list and returns it with its subtitle.

        Decoders predict from frames that they have handed out, so drawing into those would spoil others. The list has the
        one reference to the frame besides the decoder's; with a variable of the caller it would always be copied.
        """
        self.graph.push(frames.pop(0))
        frame = self.graph.pull()
        # What comes before the film's start has a negative time, which the library refuses: it has no subtitle.
        if milliseconds >= 0:
            if self.library.SetSubtitleTimeStamp(self.handle, milliseconds) != 0:
                raise MemoryError("no memory for a subtitle")
            if self.library.BurnSubtitle(self.burner, ctypes.byref(describe(self.library, frame))) != 0:
                raise ValueError(f"a frame of format {frame.format.name} is refused")
        return frame


def milliseconds_of(frame, start):
    """When a frame begins, to the nearest millisecond, counted from the start of the film."""
    if frame.pts is None:
        raise ValueError("a frame has no time")
    return math.floor((frame.pts * frame.time_base - start) * 1000 + fractions.Fraction(1, 2))


def add_encoder(output, codec, stream):
    """A stream of the output with the size, format and clock of the film's."""
    encoder = output.add_stream(codec, rate=stream.average_rate)
    encoder.width = stream.codec_context.width
    encoder.height = stream.codec_context.height
    encoder.pix_fmt = stream.codec_context.pix_fmt
    encoder.codec_context.time_base = stream.time_base
    return encoder


def transcode(library, options):
    """Burns one frame after the other, to the end of the film."""
    with av.open(options.video) as film, av.open(options.output, "w") as output:
        if not film.streams.video:
            raise ValueError("there is no video in the film")
        stream = film.streams.video[0]
        encoder = add_encoder(output, options.codec, stream)
        start = fractions.Fraction(film.start_time or 0, av.time_base)
        with contextlib.closing(Burner(library, options.subtitles, stream)) as burner:
            for packet in film.demux(stream):
                frames = packet.decode()
                while frames:
                    frame = burner.burn(frames, milliseconds_of(frames[0], start))
                    frame.pict_type = "NONE"  # the encoder chooses
                    output.mux(encoder.encode(frame))
            output.mux(encoder.encode())


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--library", default="libsubtitleframe.so.1", help="file of the library for frames")
    parser.add_argument("--codec", default="libx264", help="encoder, by FFmpeg's name")
    parser.add_argument("video", metavar="VIDEO")
    parser.add_argument("subtitles", metavar="SUBTITLES")
    parser.add_argument("output", metavar="OUTPUT")
    options = parser.parse_args()
    library = load(options.library)
    # The library counts a file that is missing as one without subtitles.
    with open(options.subtitles, "rb"):
        pass
    transcode(library, options)


if __name__ == "__main__":
    try:
        main()
    except (OSError, MemoryError, ValueError) as error:  # FFmpeg's errors are among them
        sys.exit(f"pyavhost.py: {error}")

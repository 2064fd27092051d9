#!/usr/bin/env python3
"""Burns subtitles into a video with PyAV: decodes it, draws into the decoder's own frames, and encodes them.

Needs PyAV and the libraries libsubtitle and libsubtitleframe. Written for PyAV 10, which provides neither a frame's
chroma position nor the rotation of a film: defaults are assumed for both.
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
from av.video.frame import PictureType


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
    """Loads the libraries. libsubtitleframe depends on libsubtitle, so one handle finds the functions of both."""
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
    """Describes a PyAV frame as a record that points to the frame's own planes."""
    record = SubtitleFrame()
    for number, plane in enumerate(frame.planes):
        record.data[number] = plane.buffer_ptr
        record.linesize[number] = plane.line_size
    record.width = frame.width
    record.height = frame.height
    record.format = library.SubtitlePixelFormat(frame.format.name.encode())
    # PyAV 10 does not have these two. 0 for the matrix and the range means unknown.
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
        # PyAV 10 cannot make a frame writable, but an FFmpeg filter can: it copies a frame that is still referenced
        # elsewhere and passes on any other unchanged.
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
        """Removes the first frame from a list and returns it with its subtitle.

        Decoders predict later frames from those that they have returned, so drawing into these would spoil others. The
        list must have the only reference besides the decoder's: a variable of the caller would force a copy every time.
        """
        self.graph.push(frames.pop(0))
        frame = self.graph.pull()
        # Frames before the start of the film have negative times, which the library refuses. They have no subtitle.
        if milliseconds >= 0:
            if self.library.SetSubtitleTimeStamp(self.handle, milliseconds) != 0:
                raise MemoryError("no memory for a subtitle")
            if self.library.BurnSubtitle(self.burner, ctypes.byref(describe(self.library, frame))) != 0:
                raise ValueError(f"a frame of format {frame.format.name} is refused")
        return frame


def milliseconds_of(frame, start):
    """Returns the time at which a frame begins, in milliseconds from the start of the film."""
    if frame.pts is None:
        raise ValueError("a frame has no time")
    return math.floor((frame.pts * frame.time_base - start) * 1000 + fractions.Fraction(1, 2))


def add_encoder(output, codec, stream):
    """Adds a video stream to the output, with the size, format and time base of the film."""
    encoder = output.add_stream(codec, rate=stream.average_rate)
    encoder.width = stream.codec_context.width
    encoder.height = stream.codec_context.height
    encoder.pix_fmt = stream.codec_context.pix_fmt
    encoder.codec_context.time_base = stream.time_base
    return encoder


def transcode(library, options):
    """Burns subtitles into all frames of the film."""
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
                    frame.pict_type = PictureType.NONE  # the encoder chooses
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
    # Checked here because the library accepts a missing file as one without subtitles.
    with open(options.subtitles, "rb"):
        pass
    transcode(library, options)


if __name__ == "__main__":
    try:
        main()
    except (OSError, MemoryError, ValueError) as error:  # FFmpeg's errors are among them
        sys.exit(f"pyavhost.py: {error}")

/**
 * @file psstream.h
 * Reader of the MPEG-2 program streams that sub-picture units come in.
 *
 * Include it as `<libsubtitle/psstream.h>`. The decoder that it feeds is set up with
 * `<libsubtitle/subtitledecoder.h>`. It needs no other header of the library and is valid C and C++.
 */
#ifndef PSSTREAM_H
#define PSSTREAM_H

#ifdef __GNUC__
#pragma GCC visibility push(default) /* the library is compiled with -fvisibility=hidden */
#endif
#ifdef __cplusplus
extern "C" {
#endif

/**
 * Reads the packets of an MPEG-2 program stream and passes the payload of those of sub-picture streams, whatever their
 * number, to subtitle_decode(). Stops at anything but a packet and at an unknown stream id; a packet that extends past
 * the end of the buffer is cut there. Not thread-safe, like the decoder; allocates nothing.
 *
 * @param buf  must begin with a packet's start code, else nothing is done.
 * @param len  bytes in @p buf.
 */
void DecodePSStream(unsigned char *buf, int len);

/**
 * Runs the decoder on the first 4096 bytes of the file "vobsubtest.sub" in the current folder. Does nothing if there is
 * no such file or if it is not a regular one, and never blocks. Sets up the decoder and releases it, so do not call
 * this while a renderer has a VobSub file open.
 */
void TestVobSub(void);

#ifdef __cplusplus
}
#endif
#ifdef __GNUC__
#pragma GCC visibility pop
#endif

#endif

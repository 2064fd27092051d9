/**
 * @file psstream.h
 * Reader of the MPEG-2 program streams that sub-picture units come in.
 *
 * Hosts include it as `<libsubtitle/psstream.h>`; the decoder that it feeds is set up with
 * `<libsubtitle/subtitledecoder.h>`. It needs no other header of the library, and is C and C++.
 */
#ifndef PSSTREAM_H
#define PSSTREAM_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Walks the packets of an MPEG-2 program stream and hands what belongs to sub-picture streams, of whatever number, to
 * subtitle_decode(). Ends at the first thing that is no packet and at an unknown stream id; a packet that passes the
 * buffer's end is cut there. Not guarded, like the decoder; allocates nothing.
 *
 * @param buf  begins with a packet's start code, or nothing is done.
 * @param len  bytes in @p buf.
 */
void DecodePSStream(unsigned char *buf, int len);

/**
 * Tries the decoder on the first 4096 bytes of the file "vobsubtest.sub" in the current folder, and does nothing when
 * there is none; anything but a regular file counts as none, and is not waited for. Sets up the decoder and releases it,
 * so not while a renderer has a VobSub file open.
 */
void TestVobSub(void);

#ifdef __cplusplus
}
#endif

#endif

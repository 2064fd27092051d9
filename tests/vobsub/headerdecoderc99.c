/* The decoder's header, compiled alone as C99: the types and layouts that a host in C relies on. */
#include "vobsub/subtitledecoder.h"

#include <stddef.h>

typedef char SizeOfCanvas[sizeof(struct subtitle_canvas) == 18 * sizeof(void *) + 24 ? 1 : -1];
typedef char SizeOfPlanes[sizeof(struct SubtitlePlanes) == 9 * sizeof(void *) ? 1 : -1];
typedef char PlaceOfOutput[offsetof(struct subtitle_canvas, out) == 9 * sizeof(void *) ? 1 : -1];
typedef char PlaceOfStart[offsetof(struct subtitle_canvas, start) == 18 * sizeof(void *) ? 1 : -1];
typedef char PlaceOfTop[offsetof(struct subtitle_canvas, top) == 18 * sizeof(void *) + 16 ? 1 : -1];
typedef char PlaceOfRows[offsetof(struct SubtitlePlanes, top) == 7 * sizeof(void *) ? 1 : -1];

/* These compile only if they have exactly the types of the header's. */
int subtitle_init(const unsigned int *, int, int);
void subtitle_release(void);
int subtitle_decode(const unsigned char *, int);
void subtitle_write(struct SubtitlePlanes *);
void subtitle_write_x(struct SubtitlePlanes *);
int Get_HalfByte(void);
int Get_Byte(void);
int Get_Short(void);
void Init_RleOutput(int, int, int, int, unsigned int, unsigned int);
void New_Line(void);
void Rle_Output(unsigned int);

extern struct subtitle_canvas mediadata;
extern int32_t Coded_Picture_Width, Coded_Picture_Height, Chroma_Width, Chroma_Height;
extern int32_t chroma_format, Subt_Color, Subt_Offset;

/* The program stream reader's header compiled alone as C99: what a host in C binds to. */
#include "vobsub/psstream.h"

/* With prototypes of the very same types a compiler says nothing. */
void DecodePSStream(unsigned char *, int);
void TestVobSub(void);

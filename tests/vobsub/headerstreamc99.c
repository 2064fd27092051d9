/* The program stream reader's header, compiled alone as C99: the types that a host in C relies on. */
#include "vobsub/psstream.h"

/* These compile only if they have exactly the types of the header's. */
void DecodePSStream(unsigned char *, int);
void TestVobSub(void);

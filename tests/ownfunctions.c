/* Functions of a host that knows nothing of the decoder's of the same names, which must not call them. */
#include <stdio.h>

int Get_Byte(void);
void New_Line(void);

int Get_Byte(void)
{
    fputs("Get_Byte of the host\n", stderr);
    return 0;
}

void New_Line(void)
{
    fputs("New_Line of the host\n", stderr);
}

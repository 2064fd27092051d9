/* Functions of a host that happen to have the names of decoder functions. The decoder must not call them. */
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

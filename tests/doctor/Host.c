/* The smallest host, a program of its own in C: starts the library and prints the result, which tests compare with the
   tool's. */

#include <stdio.h>

#include "orlindex/talix.h"

int main(void)
{
    printf("%d\n", (int)talix_init());
    return 0;
}

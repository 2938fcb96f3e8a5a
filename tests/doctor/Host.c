/* The smallest host: starts the library and prints what it was answered. */

#include <stdio.h>

#include "orlindex/talix.h"

int main(void)
{
    printf("%d\n", (int)talix_init());
    return 0;
}

/* The smallest host: starts the library and prints the result. */

#include <stdio.h>

#include "orlindex/talix.h"

int main(void)
{
    printf("%d\n", (int)talix_init());
    return 0;
}

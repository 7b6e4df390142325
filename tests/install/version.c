/* SPDX-License-Identifier: MIT */
/* The version of the header, then that of the library. */
#include <stdio.h>
#include <zel/libzel.h>

int main(void)
{
    printf("%s %s\n", ZEL_VERSION_STRING, zel_version());
    return 0;
}

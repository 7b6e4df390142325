/* SPDX-License-Identifier: MIT */
/* A host in C that uses every layer through the shared library. Exit status 0 if all came out right. */
#include <stddef.h>
#include <string.h>
#include <zel/_libzel.h>

static int tracks_one_object(void)
{
    float input[2][6] = {{1, 10, 10, 30, 50, 0.9F}, {0, 0, 0, 0, 0, 0}};
    float output[4][8];
    void* tracker = zel_tracker_create(640, 480, 4, 0.5F, 0.3F, 2, 10, 0);
    if (!tracker)
        return 0;
    zel_tracker_process(tracker, input, NULL);
    zel_tracker_set_params(tracker, 0.5F, 0.3F, 2, 5, 0);
    zel_tracker_process(tracker, input, output);
    zel_tracker_release(tracker);
    return output[0][0] == 1 && output[0][2] == 10 && output[0][7] == 0 && output[1][0] == -1;
}

static int inverts(void)
{
    const int type = ZEL_MAT_TYPE(ZEL_F32, 1);
    zel_mat_t* a = zel_mat_create(2, 2, type);
    int done;
    if (!a)
        return 0;
    zel_mat_setidentity(a);
    a->data.f[1] = 3;
    done = zel_mat_inv(a, a) == 0 && a->data.f[1] == -3;
    zel_mat_release(a);
    return done;
}

int main(void)
{
    zel_kalman_t* kalman = zel_kalman_create(3, 2, 0, NULL, NULL, NULL, NULL);
    const int made = kalman != NULL;
    const int fits = strcmp(zel_version(), ZEL_VERSION_STRING) == 0;
    zel_kalman_release(kalman);
    return !(made && fits && tracks_one_object() && inverts());
}

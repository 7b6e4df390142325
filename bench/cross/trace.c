/* SPDX-License-Identifier: MIT */
/*
 * A plugin of QEMU's user-mode emulator that writes the address of every executed instruction to the file given as
 * to=FILE. Debian ships no header of the plugin interface: what is used of it is declared here.
 */
#include <inttypes.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

typedef uint64_t plugin_id;
struct qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum qemu_plugin_cb_flags { QEMU_PLUGIN_CB_NO_REGS };

void qemu_plugin_register_vcpu_tb_trans_cb(plugin_id id, void (*call)(plugin_id, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_insn_exec_cb(struct qemu_plugin_insn* insn, void (*call)(unsigned, void*),
                                            enum qemu_plugin_cb_flags flags, void* data);
void qemu_plugin_register_atexit_cb(plugin_id id, void (*call)(plugin_id, void*), void* data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* tb);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* tb, size_t n);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn* insn);

int qemu_plugin_version = 1;

static FILE* trace;

static void executed(unsigned cpu, void* address)
{
    (void)cpu;
    fprintf(trace, "%" PRIxPTR "\n", (uintptr_t)address);
}

static void translated(plugin_id id, struct qemu_plugin_tb* tb)
{
    (void)id;
    for (size_t n = 0; n < qemu_plugin_tb_n_insns(tb); ++n) {
        struct qemu_plugin_insn* insn = qemu_plugin_tb_get_insn(tb, n);
        void* address = (void*)(uintptr_t)qemu_plugin_insn_vaddr(insn);
        qemu_plugin_register_vcpu_insn_exec_cb(insn, executed, QEMU_PLUGIN_CB_NO_REGS, address);
    }
}

static void finished(plugin_id id, void* data)
{
    (void)id;
    (void)data;
    fclose(trace);
}

int qemu_plugin_install(plugin_id id, const struct qemu_info_t* info, int argc, char** argv)
{
    (void)info;
    trace = argc == 1 && strncmp(argv[0], "to=", 3) == 0 ? fopen(argv[0] + 3, "w") : NULL;
    if (!trace)
        return -1;
    qemu_plugin_register_vcpu_tb_trans_cb(id, translated);
    qemu_plugin_register_atexit_cb(id, finished, NULL);
    return 0;
}

/* count_instructions.c: plugin of the emulator qemu: tells a guest program how many instructions it has executed.
 * Copyright (c) 2026 the nuv1math authors
 * SPDX-License-Identifier: MIT
 *
 * Built for the host. The guest asks by a system call of a number that Linux does not use, with the address of a 64-bit
 * count in its first argument; guest_instructions.h is the other side. Debian packages the emulator without a header,
 * hence the declarations of its plugin interface, version 1.
 */

#include <stdint.h>
#include <string.h>

#define COUNT_SYSTEM_CALL 0x6e75
#define PUBLIC __attribute__((visibility("default")))

struct qemu_plugin_tb;
struct qemu_plugin_insn;
typedef void (*TBlockCallback)(uint64_t, struct qemu_plugin_tb*);
typedef void (*TSystemCallCallback)(uint64_t, unsigned, int64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t,
                                    uint64_t, uint64_t, uint64_t);
enum qemu_plugin_op
{
    QEMU_PLUGIN_INLINE_ADD_U64
};

void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t, TBlockCallback);
void qemu_plugin_register_vcpu_syscall_cb(uint64_t, TSystemCallCallback);
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb*, enum qemu_plugin_op, void*, uint64_t);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb*);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb*, size_t);
void* qemu_plugin_insn_haddr(const struct qemu_plugin_insn*);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn*);

PUBLIC int qemu_plugin_version = 1;

static uint64_t g_iExecuted;
static char* g_pGuestMemory; /* where the guest's address 0 would be */

static void CountBlock(uint64_t a_iPlugin, struct qemu_plugin_tb* a_pBlock)
{
    (void)a_iPlugin;
    const struct qemu_plugin_insn* const pFirst = qemu_plugin_tb_get_insn(a_pBlock, 0);
    if (!g_pGuestMemory)
    {
        g_pGuestMemory = (char*)qemu_plugin_insn_haddr(pFirst) - qemu_plugin_insn_vaddr(pFirst);
    }
    qemu_plugin_register_vcpu_tb_exec_inline(a_pBlock, QEMU_PLUGIN_INLINE_ADD_U64, &g_iExecuted,
                                             qemu_plugin_tb_n_insns(a_pBlock));
}

static void AnswerGuest(uint64_t a_iPlugin, unsigned a_iProcessor, int64_t a_iNumber, uint64_t a_iAddress,
                        uint64_t a_i2, uint64_t a_i3, uint64_t a_i4, uint64_t a_i5, uint64_t a_i6, uint64_t a_i7,
                        uint64_t a_i8)
{
    (void)a_iPlugin, (void)a_iProcessor, (void)a_i2, (void)a_i3, (void)a_i4, (void)a_i5, (void)a_i6, (void)a_i7,
        (void)a_i8;
    if (a_iNumber == COUNT_SYSTEM_CALL)
    {
        memcpy(g_pGuestMemory + (uint32_t)a_iAddress, &g_iExecuted, sizeof g_iExecuted);
    }
}

PUBLIC int qemu_plugin_install(uint64_t a_iPlugin, const void* a_pInfo, int a_iArguments, char** a_vszArguments)
{
    (void)a_pInfo, (void)a_iArguments, (void)a_vszArguments;
    qemu_plugin_register_vcpu_tb_trans_cb(a_iPlugin, CountBlock);
    qemu_plugin_register_vcpu_syscall_cb(a_iPlugin, AnswerGuest);
    return 0;
}

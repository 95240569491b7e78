// helpers.S: the arithmetic helpers that GCC calls, implemented by functions of the device's core library.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// Each helper has a section of its own, so that an image contains and imports only what it uses.

    .section .note.GNU-stack, "", %progbits
    .syntax unified
    .arm

.macro begin name
    .section .text.\name, "ax", %progbits
    .align 2
    .globl \name
    .hidden \name
    .type \name, %function
\name:
.endm

// A helper with the same meaning and another name.
.macro same name, core
    begin \name
    b \core
.endm

// Converts the result of the core library (1 or 0) to one that GCC can compare with 0.
.macro comparison name, core, turn:vararg
    begin \name
    str lr, [sp, #-4]!
    bl \core
    \turn
    ldr lr, [sp], #4
    bx lr
.endm

// The core library takes the divisor first.
.macro quotient name, core
    begin \name
    mov r2, r0
    mov r0, r1
    mov r1, r2
    b \core
.endm

.macro remainder name, core
    begin \name
    str lr, [sp, #-4]!
    mov r2, r0
    mov r0, r1
    mov r1, r2
    bl \core
    mov r0, r1
    ldr lr, [sp], #4
    bx lr
.endm

    same __adddf3, __addd
    same __subdf3, __subd
    same __muldf3, __muld
    same __floatsidf, __itod
    same __floatunsidf, __utod
    same __fixdfsi, __dtoi
    same __fixunsdfsi, __dtou

    // GCC tests __gtdf2 for > 0 and __nedf2 for != 0, so 1 and 0 need no conversion. With a NaN only != is true.
    same __gtdf2, __gtd
    same __nedf2, __ned
    comparison __eqdf2, __eqd, eor r0, r0, #1 // == 0 where equal
    comparison __ltdf2, __ltd, rsb r0, r0, #0 // < 0 where less
    comparison __gedf2, __ged, sub r0, r0, #1 // >= 0 where greater or equal
    comparison __ledf2, __led, rsb r0, r0, #1 // <= 0 where less or equal

    quotient __divsi3, __rt_sdiv
    quotient __udivsi3, __rt_udiv
    remainder __modsi3, __rt_sdiv
    remainder __umodsi3, __rt_udiv

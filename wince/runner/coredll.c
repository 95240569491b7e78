// coredll.c: replaces the core library of the device when an image runs on Linux.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// MessageBoxW and TerminateProcess write their arguments to standard error.

#include "coredll.h"

#include <math.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

void* (*g_pAllocate)(size_t) = malloc;
void (*g_pRelease)(void*) = free;

// ---------------------------------------------------------------------------------------------------------------------
// System
// ---------------------------------------------------------------------------------------------------------------------

static uint16_t* AppendWide(uint16_t* a_szTo, const uint16_t* a_szText)
{
    while (*a_szText != 0)
    {
        *a_szTo++ = *a_szText++;
    }
    return a_szTo;
}

static uint16_t* AppendNumber(uint16_t* a_szTo, int a_iNumber)
{
    char szDigits[16];
    snprintf(szDigits, sizeof szDigits, "%d", a_iNumber);
    for (const char* pDigit = szDigits; *pDigit != '\0'; ++pDigit)
    {
        *a_szTo++ = (uint16_t)*pDigit;
    }
    return a_szTo;
}

// Supports %s and %d. Any other conversion aborts.
static int FormatWide(uint16_t* a_szText, const uint16_t* a_szFormat, ...)
{
    uint16_t* pEnd = a_szText;
    va_list Arguments;
    va_start(Arguments, a_szFormat);
    for (; *a_szFormat != 0; ++a_szFormat)
    {
        if (*a_szFormat != '%')
        {
            *pEnd++ = *a_szFormat;
            continue;
        }
        ++a_szFormat;
        if (*a_szFormat == 's')
        {
            pEnd = AppendWide(pEnd, va_arg(Arguments, const uint16_t*));
        }
        else if (*a_szFormat == 'd')
        {
            pEnd = AppendNumber(pEnd, va_arg(Arguments, int));
        }
        else
        {
            abort();
        }
    }
    va_end(Arguments);
    *pEnd = 0;
    return (int)(pEnd - a_szText);
}

static void Tell(const char* a_szText)
{
    if (write(STDERR_FILENO, a_szText, strlen(a_szText)) < 0)
    {
        abort();
    }
}

// Writes '?' for each character that is not ASCII. Answers Cancel.
static int ShowMessage(const void* a_pOwner, const uint16_t* a_szText, const uint16_t* a_szCaption, unsigned a_iStyle)
{
    enum
    {
        CANCEL = 2,
        ROOM = 1024
    };
    char szLine[ROOM];
    int iEnd = snprintf(szLine, sizeof szLine, "MessageBoxW: owner %s, caption %s, style %u, text:\n",
                        a_pOwner == NULL ? "null" : "given", a_szCaption == NULL ? "null" : "given", a_iStyle);
    for (; *a_szText != 0 && iEnd < ROOM - 2; ++a_szText)
    {
        szLine[iEnd++] = *a_szText < 0x80 ? (char)*a_szText : '?';
    }
    szLine[iEnd++] = '\n';
    szLine[iEnd] = '\0';
    Tell(szLine);
    return CANCEL;
}

static int EndProcess(uint32_t a_iProcess, uint32_t a_iCode)
{
    char szLine[80];
    snprintf(szLine, sizeof szLine, "TerminateProcess: handle 0x%x, code %u\n", (unsigned)a_iProcess,
             (unsigned)a_iCode);
    Tell(szLine);
    _exit((int)a_iCode);
}

static void* Allocate(size_t a_iBytes)
{
    return g_pAllocate(a_iBytes);
}

static void Release(void* a_pMemory)
{
    g_pRelease(a_pMemory);
}

// ---------------------------------------------------------------------------------------------------------------------
// Arithmetic: this program has no floating-point hardware either, so the compiler calls its own helpers
// ---------------------------------------------------------------------------------------------------------------------

// The image expects the quotient in r0 and the remainder in r1: the two halves of a 64-bit result.
static uint64_t Pair(uint32_t a_iQuotient, uint32_t a_iRemainder)
{
    return (uint64_t)a_iRemainder << 32 | a_iQuotient;
}

static uint64_t DivideSigned(int32_t a_iDivisor, int32_t a_iDividend)
{
    return Pair((uint32_t)(a_iDividend / a_iDivisor), (uint32_t)(a_iDividend % a_iDivisor));
}

static uint64_t DivideUnsigned(uint32_t a_iDivisor, uint32_t a_iDividend)
{
    return Pair(a_iDividend / a_iDivisor, a_iDividend % a_iDivisor);
}

// clang-format off
static double Add(double a_dA, double a_dB) { return a_dA + a_dB; }
static double Subtract(double a_dA, double a_dB) { return a_dA - a_dB; }
static double Multiply(double a_dA, double a_dB) { return a_dA * a_dB; }
static double FromInt(int32_t a_iValue) { return a_iValue; }
static double FromUnsigned(uint32_t a_iValue) { return a_iValue; }
static int32_t ToInt(double a_dValue) { return (int32_t)a_dValue; }
static uint32_t ToUnsigned(double a_dValue) { return (uint32_t)a_dValue; }
static int IsEqual(double a_dA, double a_dB) { return a_dA == a_dB; }
static int IsNotEqual(double a_dA, double a_dB) { return a_dA != a_dB; }
static int IsLess(double a_dA, double a_dB) { return a_dA < a_dB; }
static int IsLessOrEqual(double a_dA, double a_dB) { return a_dA <= a_dB; }
static int IsGreater(double a_dA, double a_dB) { return a_dA > a_dB; }
static int IsGreaterOrEqual(double a_dA, double a_dB) { return a_dA >= a_dB; }
// clang-format on

// ---------------------------------------------------------------------------------------------------------------------
// Names
// ---------------------------------------------------------------------------------------------------------------------

typedef void TFunction(void);

#define NAMED(a_Name, a_Function)                                                                                      \
    {                                                                                                                  \
#a_Name, (TFunction*)(a_Function)                                                                              \
    }

static const struct TNamed
{
    const char* szName;
    TFunction* pFunction;
} g_vNamed[] = {
    NAMED(MessageBoxW, ShowMessage),
    NAMED(TerminateProcess, EndProcess),
    NAMED(wsprintfW, FormatWide),
    NAMED(acos, acos),
    NAMED(asin, asin),
    NAMED(atan, atan),
    NAMED(atan2, atan2),
    NAMED(cos, cos),
    NAMED(fmod, fmod),
    NAMED(free, Release),
    NAMED(log, log),
    NAMED(malloc, Allocate),
    NAMED(memcpy, memcpy),
    NAMED(memset, memset),
    NAMED(sin, sin),
    NAMED(tan, tan),
    NAMED(__addd, Add),
    NAMED(__muld, Multiply),
    NAMED(__subd, Subtract),
    NAMED(__dtoi, ToInt),
    NAMED(__dtou, ToUnsigned),
    NAMED(__itod, FromInt),
    NAMED(__utod, FromUnsigned),
    NAMED(__eqd, IsEqual),
    NAMED(__ged, IsGreaterOrEqual),
    NAMED(__gtd, IsGreater),
    NAMED(__led, IsLessOrEqual),
    NAMED(__ltd, IsLess),
    NAMED(__ned, IsNotEqual),
    NAMED(__rt_sdiv, DivideSigned),
    NAMED(__rt_udiv, DivideUnsigned),
};

void* FindCoreFunction(const char* a_szName)
{
    for (size_t i = 0; i < sizeof g_vNamed / sizeof g_vNamed[0]; ++i)
    {
        if (strcmp(g_vNamed[i].szName, a_szName) == 0)
        {
            return (void*)g_vNamed[i].pFunction;
        }
    }
    return NULL;
}

// loader.c: maps a Windows CE dynamic library into a Linux process on ARM.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// The layout is that of Microsoft's document "PE Format". The loader checks what it relies on and refuses what it does
// not know. It loads images of this build only and is no defence against a hostile file.

#define _GNU_SOURCE

#include "loader.h"

#include "coredll.h"

#include <string.h>
#include <strings.h>
#include <sys/mman.h>

enum
{
    PAGE = 0x1000,
    MACHINE_ARM = 0x1C0,
    DLL = 0x2000,
    PE32 = 0x10B,
    WINDOWS_CE = 9,
    HIGHLOW = 3,
    EXPORTS = 0, // numbers of the directories
    IMPORTS = 1,
    RELOCATIONS = 5,
    MAY_EXECUTE = 0x20000000, // flags of a section
    MAY_READ = 0x40000000
};
static const uint32_t MAY_WRITE = 0x80000000u;

// ---------------------------------------------------------------------------------------------------------------------
// Fields
// ---------------------------------------------------------------------------------------------------------------------

static uint16_t Half(const unsigned char* a_pField)
{
    uint16_t iValue;
    memcpy(&iValue, a_pField, sizeof iValue);
    return iValue;
}

static uint32_t Word(const unsigned char* a_pField)
{
    uint32_t iValue;
    memcpy(&iValue, a_pField, sizeof iValue);
    return iValue;
}

static void StoreWord(unsigned char* a_pField, uint32_t a_iValue)
{
    memcpy(a_pField, &a_iValue, sizeof a_iValue);
}

static uint32_t Address(const void* a_pWhere)
{
    return (uint32_t)(uintptr_t)a_pWhere;
}

static const char* Text(const TImage* a_pImage, uint32_t a_iOffset)
{
    return (const char*)a_pImage->pBase + a_iOffset;
}

// Returns the address of a directory, or null if the image has none.
static unsigned char* Directory(const TImage* a_pImage, int a_iIndex, uint32_t* a_pSize)
{
    const unsigned char* pField = a_pImage->pBase + a_pImage->iHeaders + 96 + 8 * a_iIndex;
    *a_pSize = Word(pField + 4);
    return Word(pField) != 0 ? a_pImage->pBase + Word(pField) : NULL;
}

// ---------------------------------------------------------------------------------------------------------------------
// Mapping
// ---------------------------------------------------------------------------------------------------------------------

static const char* CheckHeaders(const unsigned char* a_pFile, size_t a_iLength)
{
    if (a_iLength < PAGE || Half(a_pFile) != 0x5A4D || Word(a_pFile + 0x3C) > PAGE / 2)
    {
        return "no image file";
    }
    const unsigned char* pHeader = a_pFile + Word(a_pFile + 0x3C);
    if (memcmp(pHeader, "PE\0", 4) != 0 || Half(pHeader + 24) != PE32)
    {
        return "no image file";
    }
    if (Half(pHeader + 4) != MACHINE_ARM)
    {
        return "another machine";
    }
    if ((Half(pHeader + 22) & DLL) == 0)
    {
        return "no library";
    }
    return Half(pHeader + 24 + 68) != WINDOWS_CE ? "another subsystem" : NULL;
}

static const char* Reserve(uint32_t a_iBase, TImage* a_pImage)
{
    const int iFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE;
    void* const pWanted = (void*)(uintptr_t)(a_iBase != 0 ? a_iBase : a_pImage->iPreferredBase);
    void* const pGiven = mmap(pWanted, a_pImage->iSize, PROT_READ | PROT_WRITE, iFlags, -1, 0);
    a_pImage->pBase = pGiven;
    return pGiven != pWanted ? "its addresses are not free" : NULL;
}

typedef const char* TSectionAction(const TImage*, const unsigned char* a_pHeader, const unsigned char* a_pFile,
                                   size_t a_iLength);

static const char* CopySection(const TImage* a_pImage, const unsigned char* a_pHeader, const unsigned char* a_pFile,
                               size_t a_iLength)
{
    const uint32_t iRoom = Word(a_pHeader + 8);
    const uint32_t iTo = Word(a_pHeader + 12);
    const uint32_t iStored = Word(a_pHeader + 16);
    const uint32_t iFrom = Word(a_pHeader + 20);
    if (iTo % PAGE != 0 || iTo + iRoom > a_pImage->iSize || iFrom + iStored > a_iLength)
    {
        return "a section beyond the image or the file";
    }
    memcpy(a_pImage->pBase + iTo, a_pFile + iFrom, iStored < iRoom ? iStored : iRoom);
    return NULL;
}

// Gives the pages of a section the access that its flags allow.
static const char* ProtectSection(const TImage* a_pImage, const unsigned char* a_pHeader, const unsigned char* a_pFile,
                                  size_t a_iLength)
{
    (void)a_pFile;
    (void)a_iLength;
    const uint32_t iFlags = Word(a_pHeader + 36);
    const int iAccess = ((iFlags & MAY_EXECUTE) != 0 ? PROT_EXEC : 0) | ((iFlags & MAY_READ) != 0 ? PROT_READ : 0) |
                        ((iFlags & MAY_WRITE) != 0 ? PROT_WRITE : 0);
    unsigned char* const pSection = a_pImage->pBase + Word(a_pHeader + 12);
    __builtin___clear_cache((char*)pSection, (char*)pSection + Word(a_pHeader + 8));
    return mprotect(pSection, Word(a_pHeader + 8), iAccess) != 0 ? "a section cannot be protected" : NULL;
}

static const char* ForEachSection(const TImage* a_pImage, const unsigned char* a_pFile, size_t a_iLength,
                                  TSectionAction* a_pAction)
{
    const unsigned char* pHeader = a_pFile + a_pImage->iHeaders - 20; // the file header precedes the optional one
    const unsigned char* pSection = a_pFile + a_pImage->iHeaders + Half(pHeader + 16);
    for (int i = 0; i < Half(pHeader + 2); ++i)
    {
        const char* const szRefused = a_pAction(a_pImage, pSection + 40 * i, a_pFile, a_iLength);
        if (szRefused != NULL)
        {
            return szRefused;
        }
    }
    return NULL;
}

// ---------------------------------------------------------------------------------------------------------------------
// Relocations and imports
// ---------------------------------------------------------------------------------------------------------------------

// An entry holds a kind (4 bits) and an offset in its page. Entries of kind 0 pad a block.
static const char* MoveAddress(TImage* a_pImage, uint32_t a_iPage, unsigned a_iEntry)
{
    if (a_iEntry >> 12 == HIGHLOW)
    {
        unsigned char* const pPlace = a_pImage->pBase + a_iPage + (a_iEntry & 0xFFF);
        StoreWord(pPlace, Word(pPlace) + Address(a_pImage->pBase) - a_pImage->iPreferredBase);
        ++a_pImage->iMoved;
        return NULL;
    }
    return a_iEntry != 0 ? "a relocation of an unknown kind" : NULL;
}

static const char* Relocate(TImage* a_pImage)
{
    uint32_t iSize;
    const unsigned char* pBlock = Directory(a_pImage, RELOCATIONS, &iSize);
    if (pBlock == NULL)
    {
        return "no relocations";
    }
    const unsigned char* const pEnd = pBlock + iSize;
    while (pBlock < pEnd)
    {
        const uint32_t iLength = Word(pBlock + 4);
        if (iLength < 8)
        {
            return "a block of relocations without length";
        }
        for (uint32_t i = 8; i < iLength; i += 2)
        {
            const char* const szRefused = MoveAddress(a_pImage, Word(pBlock), Half(pBlock + i));
            if (szRefused != NULL)
            {
                return szRefused;
            }
        }
        pBlock += iLength;
    }
    return NULL;
}

static const char* BindLibrary(const TImage* a_pImage, const unsigned char* a_pDescriptor)
{
    if (strcasecmp(Text(a_pImage, Word(a_pDescriptor + 12)), "COREDLL.dll") != 0)
    {
        return "an import from an unknown library";
    }
    const unsigned char* pLookup = a_pImage->pBase + Word(a_pDescriptor);
    unsigned char* pSlot = a_pImage->pBase + Word(a_pDescriptor + 16);
    for (; Word(pLookup) != 0; pLookup += 4, pSlot += 4)
    {
        const char* const szName = Text(a_pImage, Word(pLookup) + 2);
        void* const pFunction = (Word(pLookup) & 0x80000000u) == 0 ? FindCoreFunction(szName) : NULL;
        if (pFunction == NULL)
        {
            return "an import of an unknown function";
        }
        StoreWord(pSlot, Address(pFunction));
    }
    return NULL;
}

static const char* BindImports(const TImage* a_pImage)
{
    uint32_t iSize;
    const unsigned char* pDescriptor = Directory(a_pImage, IMPORTS, &iSize);
    for (; pDescriptor != NULL && Word(pDescriptor + 12) != 0; pDescriptor += 20)
    {
        const char* const szRefused = BindLibrary(a_pImage, pDescriptor);
        if (szRefused != NULL)
        {
            return szRefused;
        }
    }
    return NULL;
}

// ---------------------------------------------------------------------------------------------------------------------
// The loader
// ---------------------------------------------------------------------------------------------------------------------

static const char* Fill(const unsigned char* a_pFile, size_t a_iLength, TImage* a_pImage)
{
    memcpy(a_pImage->pBase, a_pFile, PAGE < a_iLength ? PAGE : a_iLength);
    const char* szRefused = ForEachSection(a_pImage, a_pFile, a_iLength, CopySection);
    szRefused = szRefused != NULL ? szRefused : Relocate(a_pImage);
    szRefused = szRefused != NULL ? szRefused : BindImports(a_pImage);
    szRefused = szRefused != NULL ? szRefused : ForEachSection(a_pImage, a_pFile, a_iLength, ProtectSection);
    if (szRefused == NULL && CallEntry(a_pImage, ENTRY_PROCESS_ATTACH) == 0)
    {
        szRefused = "its entry answers false";
    }
    return szRefused;
}

const char* LoadImage(const unsigned char* a_pFile, size_t a_iLength, uint32_t a_iBase, TImage* a_pImage)
{
    const char* szRefused = CheckHeaders(a_pFile, a_iLength);
    if (szRefused != NULL)
    {
        return szRefused;
    }
    a_pImage->iHeaders = Word(a_pFile + 0x3C) + 24;
    a_pImage->iPreferredBase = Word(a_pFile + a_pImage->iHeaders + 28);
    a_pImage->iSize = Word(a_pFile + a_pImage->iHeaders + 56);
    a_pImage->iMoved = 0;
    szRefused = Reserve(a_iBase, a_pImage);
    if (szRefused != NULL)
    {
        return szRefused;
    }
    szRefused = Fill(a_pFile, a_iLength, a_pImage);
    if (szRefused != NULL)
    {
        munmap(a_pImage->pBase, a_pImage->iSize);
    }
    return szRefused;
}

void* FindExport(const TImage* a_pImage, const char* a_szName)
{
    uint32_t iSize;
    const unsigned char* const pDirectory = Directory(a_pImage, EXPORTS, &iSize);
    if (pDirectory == NULL)
    {
        return NULL;
    }
    const unsigned char* const pAddresses = a_pImage->pBase + Word(pDirectory + 28);
    const unsigned char* const pNames = a_pImage->pBase + Word(pDirectory + 32);
    const unsigned char* const pOrdinals = a_pImage->pBase + Word(pDirectory + 36);
    for (uint32_t i = 0; i < Word(pDirectory + 24); ++i)
    {
        if (strcmp(Text(a_pImage, Word(pNames + 4 * i)), a_szName) == 0)
        {
            return a_pImage->pBase + Word(pAddresses + 4 * Half(pOrdinals + 2 * i));
        }
    }
    return NULL;
}

int CallEntry(const TImage* a_pImage, uint32_t a_iReason)
{
    typedef int TEntry(void* a_pModule, uint32_t a_iReason, void* a_pReserved);
    TEntry* const pEntry = (TEntry*)(void*)(a_pImage->pBase + Word(a_pImage->pBase + a_pImage->iHeaders + 16));
    return pEntry(a_pImage->pBase, a_iReason, NULL);
}

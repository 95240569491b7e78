// rows.cpp: reads lines and splits them into fields.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "text.h"

#include <algorithm>

namespace fitpoints {

// The bounds of lines and files limit the memory and the time that any input takes, endless ones included.
static const std::size_t GREATEST_LINE = 64 * 1024;

static const std::size_t BUFFER = 64 * 1024;

TRowReader::TRowReader(TInput a_Input, std::size_t a_iGreatestFile)
    : szFile(a_Input.szName), Input(std::move(a_Input)), vcBuffer(BUFFER), iNext(0), iEnd(0), iSeparator(','),
      iGreatestFile(a_iGreatestFile), iLine(0), iBytes(0)
{}

std::string Place(const TRowReader& a_Reader)
{
    return Place(a_Reader.szFile, a_Reader.iLine);
}

// ---------------------------------------------------------------------------------------------------------------------
// Lines

static void CheckBounds(const TRowReader& a_Reader, const std::string& a_szLine)
{
    if (a_szLine.size() > GREATEST_LINE)
    {
        Fail(Place(a_Reader), "the line is longer than 64 KiB");
    }
    if (a_Reader.iBytes > a_Reader.iGreatestFile)
    {
        Fail(Place(a_Reader), "the file is longer than 256 MiB");
    }
}

// Fills the buffer when all of it is used. False at the end of the input.
static bool FillBuffer(TRowReader& a_Reader)
{
    if (a_Reader.iNext == a_Reader.iEnd)
    {
        a_Reader.iNext = 0;
        a_Reader.iEnd = a_Reader.Input.Read(a_Reader.vcBuffer.data(), a_Reader.vcBuffer.size());
    }
    return a_Reader.iEnd > 0;
}

// Reads up to and with the next LF or to the end of the input. The line is without the LF. False if nothing is left.
static bool ReadToLineEnd(TRowReader& a_Reader, std::string& a_szLine)
{
    a_szLine.clear();
    bool bFound = false;
    while (!bFound && FillBuffer(a_Reader))
    {
        const char* const pNext = a_Reader.vcBuffer.data() + a_Reader.iNext;
        const char* const pEnd = a_Reader.vcBuffer.data() + a_Reader.iEnd;
        const char* const pFound = std::find(pNext, pEnd, '\n');
        bFound = pFound != pEnd;
        const std::size_t iTaken = static_cast<std::size_t>(pFound - pNext) + (bFound ? 1 : 0);
        a_szLine.append(pNext, pFound);
        a_Reader.iNext += iTaken;
        a_Reader.iBytes += iTaken;
        CheckBounds(a_Reader, a_szLine);
    }
    return bFound || !a_szLine.empty();
}

static void RemovePrefix(std::string& a_szLine, const std::string& a_szPrefix)
{
    if (a_szLine.compare(0, a_szPrefix.size(), a_szPrefix) == 0)
    {
        a_szLine.erase(0, a_szPrefix.size());
    }
}

// Reads the next line without its end and without the byte order mark of the file. False at the end. The end is LF, CR LF,
// or CR CR LF, which is left of a CR LF that was converted twice.
static bool ReadLine(TRowReader& a_Reader, std::string& a_szLine)
{
    ++a_Reader.iLine;
    if (!ReadToLineEnd(a_Reader, a_szLine))
    {
        return false;
    }
    a_szLine.erase(a_szLine.find_last_not_of('\r') + 1);
    if (a_Reader.iLine == 1)
    {
        RemovePrefix(a_szLine, "\xEF\xBB\xBF");
    }
    return true;
}

static bool IsRow(const std::string& a_szLine)
{
    return a_szLine.find_first_not_of(" \t") != std::string::npos && a_szLine[0] != '#';
}

bool ReadRowText(TRowReader& a_Reader, std::string& a_szLine)
{
    while (ReadLine(a_Reader, a_szLine))
    {
        if (IsRow(a_szLine))
        {
            return true;
        }
        if (a_Reader.szCrs.empty() && a_szLine.compare(0, 4, "#CRS") == 0)
        {
            a_Reader.szCrs = a_szLine;
        }
    }
    return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Fields

char SeparatorOf(const std::string& a_szLine)
{
    const char viSeparators[] = {',', ';', '\t'};
    long viCounts[] = {0, 0, 0};
    bool bQuoted = false;
    for (const char iChar : a_szLine)
    {
        bQuoted = bQuoted != (iChar == '"');
        for (int i = 0; i < 3; ++i)
        {
            viCounts[i] += !bQuoted && iChar == viSeparators[i] ? 1 : 0;
        }
    }
    return viSeparators[std::max_element(viCounts, viCounts + 3) - viCounts];
}

std::string SeparatorName(char a_iSeparator)
{
    return a_iSeparator == ',' ? "a comma" : a_iSeparator == ';' ? "a semicolon" : "a tab";
}

static bool IsBlank(char a_iChar, char a_iSeparator)
{
    return (a_iChar == ' ' || a_iChar == '\t') && a_iChar != a_iSeparator;
}

// The place of the first character from a_iFirst on that is no blank.
static std::size_t SkipBlanks(const std::string& a_szLine, std::size_t a_iFirst, char a_iSeparator)
{
    while (a_iFirst < a_szLine.size() && IsBlank(a_szLine[a_iFirst], a_iSeparator))
    {
        ++a_iFirst;
    }
    return a_iFirst;
}

// The field in quotes that starts at a_iFirst. Returns the place behind it and behind the blanks that follow. Two quotes
// inside stand for one. The place is npos if the closing quote is missing.
static std::size_t TakeQuoted(const std::string& a_szLine, std::size_t a_iFirst, char a_iSeparator,
                              std::string& a_szField)
{
    for (std::size_t i = a_iFirst + 1; i < a_szLine.size(); ++i)
    {
        const bool bQuote = a_szLine[i] == '"';
        if (bQuote && (i + 1 == a_szLine.size() || a_szLine[i + 1] != '"'))
        {
            return SkipBlanks(a_szLine, i + 1, a_iSeparator);
        }
        a_szField += a_szLine[i];
        i += bQuote ? 1 : 0;
    }
    return std::string::npos;
}

// The field without quotes that starts at a_iFirst, without the blanks at its end. Returns the place behind it.
static std::size_t TakePlain(const std::string& a_szLine, std::size_t a_iFirst, char a_iSeparator,
                             std::string& a_szField)
{
    const char viEnds[] = {a_iSeparator, '"', '\r', '\0'};
    const std::size_t iEnd = std::min(a_szLine.find_first_of(viEnds, a_iFirst, 3), a_szLine.size());
    a_szField.assign(a_szLine, a_iFirst, iEnd - a_iFirst);
    while (!a_szField.empty() && IsBlank(a_szField.back(), a_iSeparator))
    {
        a_szField.pop_back();
    }
    return iEnd;
}

void SplitRow(const TRowReader& a_Reader, const std::string& a_szLine, TFields& a_vszFields)
{
    const char iSeparator = a_Reader.iSeparator;
    a_vszFields.clear();
    bool bReturn = false;
    std::size_t iNext = 0;
    for (bool bMore = true; bMore; ++iNext)
    {
        std::string& szField = a_vszFields.emplace_back();
        iNext = SkipBlanks(a_szLine, iNext, iSeparator);
        const bool bQuoted = iNext < a_szLine.size() && a_szLine[iNext] == '"';
        iNext = (bQuoted ? TakeQuoted : TakePlain)(a_szLine, iNext, iSeparator, szField);
        bMore = iNext < a_szLine.size();
        bReturn = bReturn || (bMore && a_szLine[iNext] == '\r');
        if (iNext > a_szLine.size() || (bMore && a_szLine[iNext] != '\r' && a_szLine[iNext] != iSeparator))
        {
            Fail(Place(a_Reader), "the quotes of the line do not match");
        }
    }
    if (bReturn)
    {
        Fail(Place(a_Reader), "a carriage return stands inside the line");
    }
}

std::string QuotedField(const std::string& a_szField, char a_iSeparator)
{
    const bool bPlain = a_szField.find_first_of("\"\r") == std::string::npos &&
                        a_szField.find(a_iSeparator) == std::string::npos &&
                        (a_szField.empty() || (a_szField[0] != '#' && a_szField[0] != ' ' && a_szField.back() != ' '));
    if (bPlain)
    {
        return a_szField;
    }
    std::string szQuoted = "\"";
    for (const char iChar : a_szField)
    {
        szQuoted.append(iChar == '"' ? 2 : 1, iChar);
    }
    return szQuoted + '"';
}

} // namespace fitpoints

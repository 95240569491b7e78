// rows.cpp: reads lines from a file and splits them into fields.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "text.h"

#include <cerrno>

namespace fitpoints {

// These bounds limit the memory and the time that any input takes, endless ones included.
static const std::size_t GREATEST_LINE = 64 * 1024;
static const std::size_t GREATEST_FILE = 256 * 1024 * 1024;

TRowReader::TRowReader(const std::string& a_szFile)
    : szFile(a_szFile), File(std::fopen(a_szFile.c_str(), "rb"), std::fclose), iLine(0), iBytes(0)
{
    if (!File)
    {
        FailWithError(a_szFile, "cannot be read", errno);
    }
    csv_init(&Parser, CSV_STRICT | CSV_STRICT_FINI);
}

TRowReader::~TRowReader()
{
    csv_free(&Parser);
}

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
    if (a_Reader.iBytes > GREATEST_FILE)
    {
        Fail(Place(a_Reader), "the file is longer than 256 MiB");
    }
}

// Reads up to and with the next LF or to the end of the file. Returns the LF or EOF; the line is without it.
static int ReadToLineEnd(TRowReader& a_Reader, std::string& a_szLine)
{
    std::FILE* const File = a_Reader.File.get();
    a_szLine.clear();
    int iChar = getc_unlocked(File); // there is one thread; the lock would triple the time
    for (; iChar != EOF && iChar != '\n'; iChar = getc_unlocked(File))
    {
        a_szLine.push_back(static_cast<char>(iChar));
        ++a_Reader.iBytes;
        CheckBounds(a_Reader, a_szLine);
    }
    ++a_Reader.iBytes;
    CheckBounds(a_Reader, a_szLine);
    if (std::ferror(File))
    {
        FailWithError(a_Reader.szFile, "cannot be read", errno);
    }
    return iChar;
}

static void RemovePrefix(std::string& a_szLine, const std::string& a_szPrefix)
{
    if (a_szLine.compare(0, a_szPrefix.size(), a_szPrefix) == 0)
    {
        a_szLine.erase(0, a_szPrefix.size());
    }
}

// Reads the next line without its end (LF or CR LF) and without the byte order mark of the file. False at the end.
static bool ReadLine(TRowReader& a_Reader, std::string& a_szLine)
{
    ++a_Reader.iLine;
    if (ReadToLineEnd(a_Reader, a_szLine) == EOF && a_szLine.empty())
    {
        return false;
    }
    if (!a_szLine.empty() && a_szLine.back() == '\r')
    {
        a_szLine.pop_back();
    }
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

// ---------------------------------------------------------------------------------------------------------------------
// Fields

struct TRow
{
    TFields vszFields;
    int iEnds; // row ends that the parser saw: more than one if a carriage return stands inside the line
};

static void AddField(void* a_szText, std::size_t a_iLength, void* a_Row)
{
    static_cast<TRow*>(a_Row)->vszFields.emplace_back(static_cast<const char*>(a_szText), a_iLength);
}

static void EndRow(int, void* a_Row)
{
    ++static_cast<TRow*>(a_Row)->iEnds;
}

static TFields SplitLine(TRowReader& a_Reader, const std::string& a_szLine)
{
    TRow Row = {{}, 0};
    csv_parser* const Parser = &a_Reader.Parser;
    if (csv_parse(Parser, a_szLine.data(), a_szLine.size(), AddField, EndRow, &Row) != a_szLine.size() ||
        csv_fini(Parser, AddField, EndRow, &Row) != 0)
    {
        Fail(Place(a_Reader), "the quotes of the line do not match");
    }
    if (Row.iEnds != 1)
    {
        Fail(Place(a_Reader), "a carriage return stands inside the line");
    }
    return Row.vszFields;
}

bool ReadRow(TRowReader& a_Reader, TFields& a_vszFields)
{
    std::string szLine;
    while (ReadLine(a_Reader, szLine))
    {
        if (IsRow(szLine))
        {
            a_vszFields = SplitLine(a_Reader, szLine);
            return true;
        }
    }
    return false;
}

} // namespace fitpoints

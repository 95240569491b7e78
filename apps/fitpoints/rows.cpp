// rows.cpp: reads lines from a file and splits them into fields.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "progress.h"
#include "text.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace fitpoints {

// The bounds of lines and files limit the memory and the time that any input takes, endless ones included.
static const std::size_t GREATEST_LINE = 64 * 1024;

static const char* const STANDARD_INPUT = "-";

// Standard input stays open: a file that is opened later would take its descriptor.
static int KeepOpen(std::FILE*)
{
    return 0;
}

std::string InputName(const std::string& a_szFile)
{
    return a_szFile == STANDARD_INPUT ? "standard input" : a_szFile;
}

TRowReader::TRowReader(const std::string& a_szFile, std::size_t a_iGreatestFile)
    : szFile(InputName(a_szFile)), File(a_szFile == STANDARD_INPUT ? stdin : std::fopen(a_szFile.c_str(), "rb"),
                                        a_szFile == STANDARD_INPUT ? KeepOpen : std::fclose),
      iSeparator(','), iGreatestFile(a_iGreatestFile), iLine(0), iBytes(0), iFileSize(0)
{
    if (!File)
    {
        FailWithError(szFile, "cannot be read", errno);
    }
    csv_init(&Parser, CSV_STRICT | CSV_STRICT_FINI);
    struct stat Status;
    if (fstat(fileno(File.get()), &Status) == 0 && S_ISREG(Status.st_mode))
    {
        iFileSize = Status.st_size;
    }
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
    if (a_Reader.iBytes > a_Reader.iGreatestFile)
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

// Now and then, because this costs more than the reading of a line.
static void ShowReading(const TRowReader& a_Reader)
{
    const long iOften = 4096; // lines
    if (a_Reader.iFileSize > 0 && a_Reader.iLine % iOften == 0)
    {
        ShowFraction(static_cast<double>(a_Reader.iBytes) / static_cast<double>(a_Reader.iFileSize));
    }
}

bool ReadRowText(TRowReader& a_Reader, std::string& a_szLine)
{
    while (ReadLine(a_Reader, a_szLine))
    {
        ShowReading(a_Reader);
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

struct TRow
{
    TFields& vszFields;
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

void SplitRow(TRowReader& a_Reader, const std::string& a_szLine, TFields& a_vszFields)
{
    a_vszFields.clear();
    TRow Row = {a_vszFields, 0};
    csv_parser* const Parser = &a_Reader.Parser;
    csv_set_delim(Parser, static_cast<unsigned char>(a_Reader.iSeparator));
    if (csv_parse(Parser, a_szLine.data(), a_szLine.size(), AddField, EndRow, &Row) != a_szLine.size() ||
        csv_fini(Parser, AddField, EndRow, &Row) != 0)
    {
        Fail(Place(a_Reader), "the quotes of the line do not match");
    }
    if (Row.iEnds != 1)
    {
        Fail(Place(a_Reader), "a carriage return stands inside the line");
    }
}

} // namespace fitpoints

// columns.cpp: finds the columns of a file by the names in its header, and parses numbers.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "columns.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <fast_float/fast_float.h>

namespace fitpoints {

// ---------------------------------------------------------------------------------------------------------------------
// Header

// What a kind of file calls the coordinates: x, y, X, Y.
struct TNaming
{
    enumFileKind Kind;
    std::string vszNames[4];
};

static const TNaming NAMINGS[] = {
    {FILE_CSV, {"x", "y", "X", "Y"}},
    {FILE_QGIS, {"sourceX", "sourceY", "mapX", "mapY"}},
    {FILE_QGIS, {"pixelX", "pixelY", "mapX", "mapY"}}, // QGIS before 3.26
};

static int IndexOf(const TFields& a_vszHeader, const std::string& a_szName)
{
    const auto Found = std::find(a_vszHeader.begin(), a_vszHeader.end(), a_szName);
    return Found == a_vszHeader.end() ? -1 : static_cast<int>(Found - a_vszHeader.begin());
}

static std::string Joined(const TFields& a_vszFields, const std::string& a_szSeparator)
{
    std::string szText;
    for (const std::string& szField : a_vszFields)
    {
        szText += (&szField == a_vszFields.data() ? "" : a_szSeparator) + szField;
    }
    return szText;
}

// The names of a naming that a file needs.
static TFields NeededNames(const TNaming& a_Naming, enumNeeded a_Needed)
{
    return {a_Naming.vszNames + (a_Needed == NEEDED_TARGET ? COLUMN_XA : COLUMN_X),
            a_Naming.vszNames + (a_Needed == NEEDED_SOURCE ? COLUMN_XA : COLUMN_NAME)};
}

static TFields MissingNames(const TNaming& a_Naming, enumNeeded a_Needed, const TFields& a_vszHeader)
{
    TFields vszMissing;
    for (const std::string& szName : NeededNames(a_Naming, a_Needed))
    {
        if (IndexOf(a_vszHeader, szName) < 0)
        {
            vszMissing.push_back(szName);
        }
    }
    return vszMissing;
}

// The naming of which the fewest needed names are missing.
static const TNaming& FindNaming(const TFields& a_vszHeader, enumNeeded a_Needed)
{
    return *std::min_element(std::begin(NAMINGS), std::end(NAMINGS),
                             [&](const TNaming& a_First, const TNaming& a_Second) {
                                 return MissingNames(a_First, a_Needed, a_vszHeader).size() <
                                        MissingNames(a_Second, a_Needed, a_vszHeader).size();
                             });
}

// The separator of a header whose names would all be found if it were allowed; 0 if there is none.
static char WrongSeparator(const std::string& a_szLine, enumNeeded a_Needed)
{
    for (const char iSeparator : {'|', ':', '/', ' '})
    {
        TFields vszHeader(1);
        for (const char iChar : a_szLine)
        {
            if (iChar == iSeparator)
            {
                vszHeader.emplace_back();
            }
            else if (iChar != ' ')
            {
                vszHeader.back().push_back(iChar);
            }
        }
        if (MissingNames(FindNaming(vszHeader, a_Needed), a_Needed, vszHeader).empty())
        {
            return iSeparator;
        }
    }
    return 0;
}

[[noreturn]] static void RefuseHeader(const TRowReader& a_Reader, const std::string& a_szLine,
                                      const TFields& a_vszHeader, enumNeeded a_Needed)
{
    const char iWrong = WrongSeparator(a_szLine, a_Needed);
    if (iWrong != 0)
    {
        Fail(Place(a_Reader), std::string("the columns are separated by ") + (iWrong == ' ' ? "blanks" : "") +
                                  (iWrong == ' ' ? "" : Quoted(std::string(1, iWrong))) +
                                  ": the separator must be a comma, a semicolon or a tab");
    }
    const TNaming& Naming = FindNaming(a_vszHeader, a_Needed);
    const TFields vszMissing = MissingNames(Naming, a_Needed, a_vszHeader);
    const std::string szColumns = "the columns are " + Quoted(Joined(a_vszHeader, std::string(1, a_Reader.iSeparator)));
    if (vszMissing.size() < NeededNames(Naming, a_Needed).size())
    {
        Fail(Place(a_Reader),
             szColumns + ": " + Joined(vszMissing, " and ") + (vszMissing.size() == 1 ? " is" : " are") + " missing");
    }
    Fail(Place(a_Reader), szColumns + ", without " + Joined(NeededNames(NAMINGS[0], a_Needed), ",") + " and without " +
                              Joined(NeededNames(NAMINGS[1], a_Needed), ","));
}

static void CheckRepetitions(const TRowReader& a_Reader, const TFields& a_vszHeader, const std::string& a_szName)
{
    if (std::count(a_vszHeader.begin(), a_vszHeader.end(), a_szName) > 1)
    {
        Fail(Place(a_Reader), "the column " + a_szName + " stands twice");
    }
}

// The columns that QGIS computes are known, though not read.
static bool IsKnown(const TColumns& a_Columns, const std::string& a_szName)
{
    const bool bComputed = a_szName == "dX" || a_szName == "dY" || a_szName == "residual";
    return (a_Columns.Kind == FILE_QGIS && bComputed) ||
           std::find(std::begin(a_Columns.vszNames), std::end(a_Columns.vszNames), a_szName) !=
               std::end(a_Columns.vszNames);
}

TColumns ReadHeader(TRowReader& a_Reader, const std::string& a_szLine, enumNeeded a_Needed)
{
    a_Reader.iSeparator = SeparatorOf(a_szLine);
    TColumns Columns;
    SplitRow(a_Reader, a_szLine, Columns.vszHeader);
    const TNaming& Naming = FindNaming(Columns.vszHeader, a_Needed);
    if (!MissingNames(Naming, a_Needed, Columns.vszHeader).empty())
    {
        RefuseHeader(a_Reader, a_szLine, Columns.vszHeader, a_Needed);
    }
    Columns.Kind = Naming.Kind;
    std::copy(std::begin(Naming.vszNames), std::end(Naming.vszNames), Columns.vszNames);
    Columns.vszNames[COLUMN_NAME] = IndexOf(Columns.vszHeader, "name") < 0 ? "id" : "name";
    Columns.vszNames[COLUMN_ENABLE] = "enable";
    Columns.vszNames[COLUMN_CHECK] = "check";
    for (int i = 0; i < COLUMN_COUNT; ++i)
    {
        CheckRepetitions(a_Reader, Columns.vszHeader, Columns.vszNames[i]);
        Columns.viIndex[i] = IndexOf(Columns.vszHeader, Columns.vszNames[i]);
    }
    std::copy_if(Columns.vszHeader.begin(), Columns.vszHeader.end(), std::back_inserter(Columns.vszUnread),
                 [&](const std::string& a_szName) { return !IsKnown(Columns, a_szName); });
    return Columns;
}

void CheckFieldCount(const TRowReader& a_Reader, const TColumns& a_Columns, const std::string& a_szLine,
                     const TFields& a_vszFields)
{
    if (a_vszFields.size() == a_Columns.vszHeader.size())
    {
        return;
    }
    const char iSeparator = SeparatorOf(a_szLine);
    const std::string szSeparators = iSeparator == a_Reader.iSeparator
                                         ? ""
                                         : ": the separator is " + SeparatorName(iSeparator) + ", that of the header " +
                                               SeparatorName(a_Reader.iSeparator);
    Fail(Place(a_Reader), Count(a_vszFields.size(), "field") + " where the header has " +
                              std::to_string(a_Columns.vszHeader.size()) + szSeparators);
}

// ---------------------------------------------------------------------------------------------------------------------
// Numbers

// True if all digits before the exponent of a decimal number are 0.
static bool IsZero(const std::string& a_szNumber)
{
    const std::size_t iDigit = a_szNumber.find_first_of("123456789eE");
    return iDigit == std::string::npos || a_szNumber[iDigit] == 'e' || a_szNumber[iDigit] == 'E';
}

// Why a text is no number; empty if it is one. a_dValue gets the number.
static std::string ParseNumber(const std::string& a_szText, double& a_dValue)
{
    const char* szBegin = a_szText.data();
    const char* const szEnd = szBegin + a_szText.size();
    if (*szBegin == '+' && a_szText.size() > 1 && a_szText[1] != '-') // which from_chars does not take
    {
        ++szBegin;
    }
    const fast_float::from_chars_result Result = fast_float::from_chars(szBegin, szEnd, a_dValue);
    if (Result.ec != std::errc() || Result.ptr != szEnd)
    {
        return "is not a decimal number";
    }
    const bool bTooLarge = std::isinf(a_dValue) && a_szText.find_first_of("0123456789") != std::string::npos;
    if (bTooLarge || (a_dValue == 0 && !IsZero(a_szText)))
    {
        return "is out of the range of a double";
    }
    return std::isfinite(a_dValue) ? "" : "is not a finite number";
}

bool IsNumber(const std::string& a_szField, double& a_dValue)
{
    return ParseNumber(a_szField, a_dValue).empty();
}

// Takes the number's decimal mark for that of the file, or compares it with that.
static std::string ParseMarkedNumber(const std::string& a_szField, TDecimalMark& a_Mark, double& a_dValue)
{
    std::string szText = a_szField;
    const std::size_t iMark = a_szField.find_first_of(".,");
    const char iChar = iMark == std::string::npos ? '\0' : a_szField[iMark];
    if (iChar == ',')
    {
        szText[iMark] = '.';
    }
    const std::string szProblem = ParseNumber(szText, a_dValue);
    if (szProblem.empty() && iChar != '\0' && a_Mark.iMark != '\0' && iChar != a_Mark.iMark)
    {
        return iChar == ',' ? "has a decimal comma, the numbers before it have decimal points"
                            : "has a decimal point, the numbers before it have decimal commas";
    }
    a_Mark.iMark = iChar != '\0' ? iChar : a_Mark.iMark;
    return szProblem;
}

double ParseCoordinate(const std::string& a_szField, const std::string& a_szColumn, const TRowReader& a_Reader,
                       TDecimalMark& a_Mark)
{
    if (a_szField.empty())
    {
        Fail(Place(a_Reader), "column " + a_szColumn + " is empty");
    }
    double dValue = 0;
    const std::string szProblem =
        a_Mark.bCommaAllowed ? ParseMarkedNumber(a_szField, a_Mark, dValue) : ParseNumber(a_szField, dValue);
    if (!szProblem.empty())
    {
        Fail(Place(a_Reader), "column " + a_szColumn + ": " + Quoted(a_szField) + " " + szProblem);
    }
    return dValue;
}

} // namespace fitpoints

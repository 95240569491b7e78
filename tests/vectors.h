// vectors.h: reads the tables of exact test vectors in tests/data and compares results with them, bit for bit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// tests/tools/make_vectors.py makes the tables and describes their format. Anything unexpected in a table (no file, no
// case, a token too few, too many or not a number) ends the test with an exception and so fails it.

#ifndef NUV_TESTS_VECTORS_H
#define NUV_TESTS_VECTORS_H

#include "testing.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace nuv_tests {

// FNV-1a, 64 bits, of a sequence of 64-bit values, each taken byte by byte from its low end.
class TDigest
{
public:
    void Add(std::uint64_t a_iValue)
    {
        for (int iShift = 0; iShift < 64; iShift += 8)
        {
            m_iHash = (m_iHash ^ (a_iValue >> iShift & 0xff)) * 0x100000001b3u;
        }
    }

    // NaN have no bits of their own: every one counts as the same.
    void Add(double a_dValue)
    {
        Add(std::isnan(a_dValue) ? std::uint64_t{0x7ff8} << 48 : Bits(a_dValue));
    }

    std::uint64_t Value() const
    {
        return m_iHash;
    }

private:
    std::uint64_t m_iHash = 0xcbf29ce484222325u;
};

// The digests of all tables that were checked in this process. Printed at its end, they can be compared between
// platforms; the order in which the tests ran does not matter.
class TDigestReport : public ::testing::Environment
{
public:
    static void Add(const std::string& a_szTable, std::uint64_t a_iDigest)
    {
        std::printf("[ digest ] %016" PRIx64 " %s\n", a_iDigest, a_szTable.c_str());
        Digests()[a_szTable] = a_iDigest;
    }

    void TearDown() override
    {
        TDigest Total;
        for (const auto& Digest : Digests())
        {
            Total.Add(Digest.second);
        }
        if (!Digests().empty())
        {
            std::printf("[ digest ] %016" PRIx64 " all of %zu tables\n", Total.Value(), Digests().size());
        }
    }

private:
    static std::map<std::string, std::uint64_t>& Digests()
    {
        static std::map<std::string, std::uint64_t> Values;
        return Values;
    }
};

inline ::testing::Environment* const DigestReport = ::testing::AddGlobalTestEnvironment(new TDigestReport);

// An array handed to the library, with guards before and behind it that must stay.
class TGuardedArray
{
public:
    explicit TGuardedArray(const std::vector<double>& a_vdValues)
        : m_vdValues(a_vdValues.size() + 2 * GuardLength, GuardValue)
    {
        std::copy(a_vdValues.begin(), a_vdValues.end(), m_vdValues.begin() + GuardLength);
    }

    // An output of a_iLength values that were not written yet.
    static TGuardedArray Output(std::size_t a_iLength)
    {
        return TGuardedArray(std::vector<double>(a_iLength, Untouched));
    }

    double* Data()
    {
        return m_vdValues.data() + GuardLength;
    }

    std::vector<double> Values() const
    {
        return std::vector<double>(m_vdValues.begin() + GuardLength, m_vdValues.end() - GuardLength);
    }

    bool IsIntact() const
    {
        const auto IsGuard = [](double a_dValue) { return SameBits(a_dValue, GuardValue); };
        return std::all_of(m_vdValues.begin(), m_vdValues.begin() + GuardLength, IsGuard) &&
               std::all_of(m_vdValues.end() - GuardLength, m_vdValues.end(), IsGuard);
    }

private:
    static constexpr std::ptrdiff_t GuardLength = 16;
    static constexpr double GuardValue = 6.5e66;
    std::vector<double> m_vdValues;
};

// One case of a table: the inputs are read off one by one, then the outputs are compared one by one.
class TVectorCase
{
public:
    TVectorCase(std::string a_szPlace, const std::string& a_szLine, TDigest& a_Digest)
        : m_szPlace(std::move(a_szPlace)), m_Digest(a_Digest)
    {
        std::size_t iStart = 0;
        while (iStart < a_szLine.size())
        {
            const std::size_t iEnd = std::min(a_szLine.find(' ', iStart), a_szLine.size());
            m_vszTokens.push_back(a_szLine.substr(iStart, iEnd - iStart));
            iStart = iEnd + 1;
        }
    }

    int Int()
    {
        const std::string szToken = Next();
        char* pEnd = nullptr;
        const long iValue = std::strtol(szToken.c_str(), &pEnd, 10);
        Require(!szToken.empty() && *pEnd == '\0', "not a whole number: " + szToken);
        return static_cast<int>(iValue);
    }

    double Double()
    {
        return ToDouble(Next());
    }

    std::vector<double> Doubles(std::ptrdiff_t a_iCount)
    {
        std::vector<double> vdValues;
        for (std::ptrdiff_t i = 0; i < a_iCount; ++i)
        {
            vdValues.push_back(Double());
        }
        return vdValues;
    }

    TGuardedArray Array(std::ptrdiff_t a_iCount)
    {
        return TGuardedArray(Doubles(a_iCount));
    }

    std::vector<int> Ints(std::ptrdiff_t a_iCount)
    {
        std::vector<int> viValues;
        for (std::ptrdiff_t i = 0; i < a_iCount; ++i)
        {
            viValues.push_back(Int());
        }
        return viValues;
    }

    template <class TRecord> TRecord Record()
    {
        const std::vector<double> vdFields = Doubles(sizeof(TRecord) / sizeof(double));
        TRecord Values;
        std::memcpy(&Values, vdFields.data(), sizeof Values);
        return Values;
    }

    // The outputs. a_iUntouched is what a whole number holds that was not written.
    void ExpectInt(int a_iActual, int a_iUntouched = 0)
    {
        BeginOutput();
        const int iExpected = IsUntouchedNext() ? (Next(), a_iUntouched) : Int();
        m_Digest.Add(static_cast<std::uint64_t>(a_iActual));
        if (a_iActual != iExpected)
        {
            ADD_FAILURE() << m_szPlace << ": output " << m_iOutput << " is " << a_iActual << ", expected " << iExpected;
        }
    }

    void ExpectDouble(double a_dActual)
    {
        BeginOutput();
        const double dExpected = IsUntouchedNext() ? (Next(), Untouched) : Double();
        m_Digest.Add(a_dActual);
        if (!SameBits(dExpected, a_dActual))
        {
            ADD_FAILURE() << m_szPlace << ": output " << m_iOutput << " is " << HexText(a_dActual) << ", expected "
                          << HexText(dExpected);
        }
    }

    // An output that the table has to more digits than a double: the error in the table's unit. What stands in the
    // table as a plain number must have its bits, which counts as no error or an infinite one.
    double UnitsOff(double a_dActual)
    {
        BeginOutput();
        if (IsUntouchedNext())
        {
            Next();
            return SameBits(Untouched, a_dActual) ? 0.0 : Inf;
        }
        std::vector<std::string> vszParts;
        std::istringstream Token(Next());
        for (std::string szPart; std::getline(Token, szPart, ',');)
        {
            vszParts.push_back(szPart);
        }
        if (vszParts.size() == 1)
        {
            return SameBits(ToDouble(vszParts[0]), a_dActual) ? 0.0 : Inf;
        }
        Require(vszParts.size() == 3, "not value,rest,unit");
        return std::fabs((a_dActual - ToDouble(vszParts[0])) / ToDouble(vszParts[2]) - ToDouble(vszParts[1]));
    }

    // Where the case stands, and at which of its outputs.
    std::string Place() const
    {
        return m_szPlace + ": output " + std::to_string(m_iOutput);
    }

    void ExpectArray(const TGuardedArray& a_Array)
    {
        for (double dValue : a_Array.Values())
        {
            ExpectDouble(dValue);
        }
        ExpectIntact(a_Array);
    }

    // The guards of an array were not overwritten.
    void ExpectIntact(const TGuardedArray& a_Array) const
    {
        EXPECT_TRUE(a_Array.IsIntact()) << m_szPlace << ": written beyond an array";
    }

    template <class TRecord> void ExpectRecord(const TRecord& a_Record)
    {
        for (double dValue : Fields(a_Record))
        {
            ExpectDouble(dValue);
        }
    }

    void Finish()
    {
        if (m_iOutput == 0)
        {
            BeginOutput();
        }
        Require(m_iNext == m_vszTokens.size(), "more tokens than the routine has arguments");
    }

private:
    void Require(bool a_bHolds, const std::string& a_szComplaint) const
    {
        if (!a_bHolds)
        {
            throw std::runtime_error(m_szPlace + ": " + a_szComplaint);
        }
    }

    std::string Next()
    {
        Require(m_iNext < m_vszTokens.size(), "fewer tokens than the routine has arguments");
        return m_vszTokens[m_iNext++];
    }

    bool IsUntouchedNext() const
    {
        return m_iNext < m_vszTokens.size() && m_vszTokens[m_iNext] == "-";
    }

    void BeginOutput()
    {
        if (m_iOutput++ == 0)
        {
            Require(Next() == "|", "inputs where the outputs should begin");
        }
    }

    double ToDouble(const std::string& a_szToken) const
    {
        const bool bNegative = !a_szToken.empty() && a_szToken[0] == '-';
        const std::string szMagnitude = a_szToken.substr(bNegative ? 1 : 0);
        const bool bNamed = szMagnitude == "inf" || a_szToken == "nan";
        Require(bNamed || szMagnitude.compare(0, 2, "0x") == 0, "not a hexadecimal double: " + a_szToken);
        char* pEnd = nullptr;
        const double dValue = std::strtod(a_szToken.c_str(), &pEnd);
        Require(*pEnd == '\0', "not a hexadecimal double: " + a_szToken);
        return dValue;
    }

    std::string m_szPlace;
    std::vector<std::string> m_vszTokens;
    TDigest& m_Digest;
    std::size_t m_iNext = 0;
    int m_iOutput = 0;
};

// Runs a_Check on every case of tests/data/<a_szName>.txt; gives the digest of what was compared bit for bit.
template <class TCheck> std::uint64_t ForEachCase(const std::string& a_szName, TCheck a_Check)
{
    const std::string szFile = a_szName + ".txt";
    std::ifstream File(std::string(NUV_TEST_DATA "/") + szFile);
    EXPECT_TRUE(File) << "cannot read " << szFile;
    TDigest Digest;
    std::string szLine;
    int iCases = 0;
    for (int iLine = 1; std::getline(File, szLine); ++iLine)
    {
        if (szLine.empty() || szLine[0] != '#')
        {
            TVectorCase Case(szFile + ":" + std::to_string(iLine), szLine, Digest);
            a_Check(Case);
            Case.Finish();
            ++iCases;
        }
    }
    EXPECT_GT(iCases, 0) << szFile << " holds no case";
    return Digest.Value();
}

// The cases of an exact table, with its digest.
template <class TCheck> void CheckTable(const std::string& a_szName, TCheck a_Check)
{
    TDigestReport::Add(a_szName, ForEachCase(a_szName, a_Check));
}

} // namespace nuv_tests

#endif // NUV_TESTS_VECTORS_H

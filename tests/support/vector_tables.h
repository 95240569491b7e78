// vector_tables.h: reads the tables of exact test vectors in tests/data and compares results with them, bit for bit.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT
//
// tests/tools/make_vectors.py makes the tables and describes their format. A table that cannot be read ends the test with
// an exception, which fails it: no file, no case, too few or too many tokens, a token that is not a number.

#ifndef NUV_TESTS_SUPPORT_VECTOR_TABLES_H
#define NUV_TESTS_SUPPORT_VECTOR_TABLES_H

#include "control_points.h"
#include "expect.h"
#include "stop.h"

#include <algorithm>
#include <cinttypes>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

namespace nuv_tests {

// The FNV-1a hash, 64 bits, of a sequence of 64-bit values. Each value is hashed byte by byte from its low end.
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

    // All NaN count as one value, because their bits differ between processors.
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

// Collects the digests of all tables that this process checks and prints them at its end, so that they can be compared
// between platforms. The order of the tests does not matter.
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

// One case of a table. A test reads the inputs in their order, then compares the outputs in theirs.
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

    TGuardedPoints Points(std::ptrdiff_t a_iCount)
    {
        TGuardedArray X = Array(a_iCount);
        TGuardedArray Y = Array(a_iCount);
        TGuardedArray Xa = Array(a_iCount);
        return {X, Y, Xa, Array(a_iCount)};
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
        return FromFields<TRecord>(vdFields.data());
    }

    // a_iUntouched is the value that an output holds if it was not written.
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

    // The error of an output in units of the table, which gives it to more digits than a double has. An output that the
    // table gives as a plain number must have the same bits: the error is then 0, else infinite.
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

    // File and line of the case, and the number of the current output.
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
            Stop(m_szPlace + ": " + a_szComplaint);
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

// Runs a_Check on every case of tests/data/<a_szName>.txt. Returns the digest of all outputs compared bit for bit.
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

// Checks all cases of an exact table and reports its digest.
template <class TCheck> void CheckTable(const std::string& a_szName, TCheck a_Check)
{
    TDigestReport::Add(a_szName, ForEachCase(a_szName, a_Check));
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_VECTOR_TABLES_H

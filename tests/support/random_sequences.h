// random_sequences.h: reads the table of uniform random sequences.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_TESTS_SUPPORT_RANDOM_SEQUENCES_H
#define NUV_TESTS_SUPPORT_RANDOM_SEQUENCES_H

#include "stop.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace nuv_tests {

// The draws that follow a seed, by seed. Throws if a block has another number of draws than it says.
inline std::map<int, std::vector<double> > ReadRandomSequences()
{
    std::ifstream Table(NUV_TEST_DATA "/random_sequences.txt");
    std::map<int, std::vector<double> > Sequences;
    std::string szLine;
    while (std::getline(Table, szLine))
    {
        int iSeed = 0;
        int iDraws = 0;
        if (std::sscanf(szLine.c_str(), "seed %d, %d draws", &iSeed, &iDraws) != 2)
        {
            continue; // the head of the file
        }
        std::vector<double>& vdDraws = Sequences[iSeed];
        while (static_cast<int>(vdDraws.size()) < iDraws && std::getline(Table, szLine))
        {
            vdDraws.push_back(std::strtod(szLine.c_str(), nullptr));
        }
        if (static_cast<int>(vdDraws.size()) != iDraws)
        {
            Stop("random_sequences.txt ends early");
        }
    }
    return Sequences;
}

} // namespace nuv_tests

#endif // NUV_TESTS_SUPPORT_RANDOM_SEQUENCES_H

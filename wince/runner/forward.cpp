// forward.cpp: loads the image that the tests call.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "forward.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace nuv_tests {

namespace {

std::string ReadFile(const char* a_szPath)
{
    std::ifstream File(a_szPath, std::ios::binary);
    if (!File)
    {
        throw std::runtime_error(std::string("cannot read ") + a_szPath);
    }
    return {std::istreambuf_iterator<char>(File), std::istreambuf_iterator<char>()};
}

TImage LoadForTests()
{
    const char* const szBase = std::getenv("NUV_IMAGE_BASE");
    const std::uint32_t iBase = szBase != nullptr ? std::stoul(szBase, nullptr, 16) : 0;
    const std::string& szFile = ImageFile();
    TImage Image;
    const char* const szRefused =
        LoadImage(reinterpret_cast<const unsigned char*>(szFile.data()), szFile.size(), iBase, &Image);
    if (szRefused != nullptr)
    {
        throw std::runtime_error(std::string(NUV_IMAGE ": ") + szRefused);
    }
    return Image;
}

} // namespace

const std::string& ImageFile()
{
    static const std::string szFile = ReadFile(NUV_IMAGE);
    return szFile;
}

const TImage& LoadedImage()
{
    static const TImage Image = LoadForTests();
    return Image;
}

void* FindInImage(const char* a_szName)
{
    void* const pExport = FindExport(&LoadedImage(), a_szName);
    if (pExport == nullptr)
    {
        throw std::runtime_error(std::string("the image does not export ") + a_szName);
    }
    return pExport;
}

} // namespace nuv_tests

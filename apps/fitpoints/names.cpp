// names.cpp: places the names of points in the picture so that they cover nothing.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "names.h"
#include "text.h"

#include <algorithm>
#include <cmath>

namespace fitpoints {

static const std::size_t LONGEST_NAME = 28; // characters
static const double NAME_HEIGHT = 14;       // pixels
static const double POINT_SIZE = 9;         // of the room that a mark takes

struct TBox
{
    double dLeft, dRight, dBottom, dTop;
};

static bool Overlap(const TBox& a_First, const TBox& a_Second)
{
    return a_First.dLeft < a_Second.dRight && a_Second.dLeft < a_First.dRight && a_First.dBottom < a_Second.dTop &&
           a_Second.dBottom < a_First.dTop;
}

static TBox BoxAround(const TSpot& a_Centre, double a_dWidth, double a_dHeight)
{
    return {a_Centre.dX - a_dWidth / 2, a_Centre.dX + a_dWidth / 2, a_Centre.dY - a_dHeight / 2,
            a_Centre.dY + a_dHeight / 2};
}

// Everything that a name must not cover. A vector is a row of small boxes.
class TObstacles
{
public:
    explicit TObstacles(const TDrawing& a_Drawing) : m_Drawing(a_Drawing)
    {
        for (const TDrawnPoint& Point : a_Drawing.vPoints)
        {
            m_vBoxes.push_back(BoxAround(Point.Given, POINT_SIZE, POINT_SIZE));
            AddLine(Point.Given, Point.Tip);
        }
    }

    bool IsFree(const TBox& a_Box) const
    {
        const bool bInside = a_Box.dLeft > m_Drawing.X.dLow && a_Box.dRight < m_Drawing.X.dHigh &&
                             a_Box.dBottom > m_Drawing.Y.dLow && a_Box.dTop < m_Drawing.Y.dHigh;
        return bInside && std::none_of(m_vBoxes.begin(), m_vBoxes.end(),
                                       [&](const TBox& a_Other) { return Overlap(a_Box, a_Other); });
    }

    void Add(const TBox& a_Box)
    {
        m_vBoxes.push_back(a_Box);
    }

    void AddLine(const TSpot& a_From, const TSpot& a_To)
    {
        const double dStep = 4;
        const double dX = a_To.dX - a_From.dX;
        const double dY = a_To.dY - a_From.dY;
        const int iSteps = static_cast<int>(std::hypot(dX, dY) / dStep);
        for (int i = 1; i <= iSteps; ++i)
        {
            m_vBoxes.push_back(BoxAround({a_From.dX + dX * i / iSteps, a_From.dY + dY * i / iSteps}, dStep, dStep));
        }
    }

private:
    const TDrawing& m_Drawing;
    std::vector<TBox> m_vBoxes;
};

// An estimate of the width in pixels, rather too wide than too narrow. Characters of three and four bytes are mostly as
// wide as they are high.
static double WidthOf(const std::string& a_szText)
{
    double dWidth = 4;
    for (const char iChar : a_szText)
    {
        const auto iByte = static_cast<unsigned char>(iChar);
        dWidth += iByte >= 0xE0                                                         ? 15.5
                  : iByte >= 0xC0                                                       ? 8.5
                  : iByte >= 0x80                                                       ? 0
                  : std::string("mwMW@%").find(iChar) != std::string::npos              ? 12.5
                  : std::string("fijlrtI.,:;'|!()[] ").find(iChar) != std::string::npos ? 5.5
                  : iByte >= 'A' && iByte <= 'Z'                                        ? 9.5
                                                                                        : 8.3;
    }
    return dWidth;
}

// The first characters of a long text and an ellipsis.
static std::string Cut(const std::string& a_szText)
{
    std::size_t iCharacters = 0;
    for (std::size_t i = 0; i < a_szText.size(); ++i)
    {
        const bool bStart = (static_cast<unsigned char>(a_szText[i]) & 0xC0) != 0x80;
        if (bStart && ++iCharacters > LONGEST_NAME)
        {
            return a_szText.substr(0, i) + "\xE2\x80\xA6";
        }
    }
    return a_szText;
}

// Tries the places around the point at this distance. True if one is free.
static bool PlaceAt(double a_dDistance, const TSpot& a_Point, double a_dWidth, const TObstacles& a_Obstacles,
                    TSpot& a_Centre)
{
    // Up, down, right, left, and the corners between them: for each the direction of the centre of the name.
    const int viDirections[8][2] = {{0, 1}, {0, -1}, {1, 0}, {-1, 0}, {1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
    for (const auto& viDirection : viDirections)
    {
        const bool bCorner = viDirection[0] != 0 && viDirection[1] != 0;
        const double dGap = bCorner ? 0.6 * a_dDistance : a_dDistance;
        a_Centre = {a_Point.dX + viDirection[0] * (dGap + a_dWidth / 2),
                    a_Point.dY + viDirection[1] * (dGap + NAME_HEIGHT / 2)};
        if (a_Obstacles.IsFree(BoxAround(a_Centre, a_dWidth, NAME_HEIGHT)))
        {
            return true;
        }
    }
    return false;
}

// The leader line ends at the box of the name, at its place nearest to the point.
static void AddLeader(const TSpot& a_Point, double a_dWidth, TDrawnName& a_Name)
{
    const TBox Box = BoxAround(a_Name.Centre, a_dWidth - 4, NAME_HEIGHT - 2);
    a_Name.bLeader = true;
    a_Name.LeaderFrom = a_Point;
    a_Name.LeaderTo = {std::clamp(a_Point.dX, Box.dLeft, Box.dRight), std::clamp(a_Point.dY, Box.dBottom, Box.dTop)};
}

void PlaceNames(const std::vector<TWantedName>& a_vNames, TDrawing& a_Drawing)
{
    TObstacles Obstacles(a_Drawing);
    for (const TWantedName& Wanted : a_vNames)
    {
        TDrawnName Name = {Cut(Wanted.szText), {}, false, {}, {}};
        const TSpot& Point = a_Drawing.vPoints[Wanted.iPoint].Given;
        const double dWidth = WidthOf(Name.szText);
        const double vdDistances[] = {6, 18, 32, 48}; // pixels; beyond the first one there is a leader line
        const auto pDistance = std::find_if(std::begin(vdDistances), std::end(vdDistances),
                                            [&](double a_dDistance)
                                            { return PlaceAt(a_dDistance, Point, dWidth, Obstacles, Name.Centre); });
        if (pDistance == std::end(vdDistances))
        {
            ++a_Drawing.iNamesLeftOut;
            continue;
        }
        if (pDistance != std::begin(vdDistances))
        {
            AddLeader(Point, dWidth, Name);
            Obstacles.AddLine(Name.LeaderFrom, Name.LeaderTo);
        }
        Obstacles.Add(BoxAround(Name.Centre, dWidth, NAME_HEIGHT));
        a_Drawing.vNames.push_back(Name);
    }
}

} // namespace fitpoints

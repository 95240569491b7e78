// report_common.cpp: what the reports say alike of kinds and suspected blunders.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "report_common.h"
#include "support.h"

#include <algorithm>

namespace fitpoints {

static std::string Text(const TFit& a_Fit, judgement::enumReason a_Reason, nuv::enumMethodUsed a_Kind)
{
    return a_Reason == judgement::REASON_NONE
               ? ""
               : ReasonText(a_Reason, a_Kind, static_cast<std::size_t>(a_Fit.Judgement.iFitted));
}

std::string WhyMissing(const TFit& a_Fit, nuv::enumMethodUsed a_Kind)
{
    return Text(a_Fit, a_Fit.Judgement.vKinds[a_Kind].Reason, a_Kind);
}

std::string WhyNotJudged(const TFit& a_Fit, nuv::enumMethodUsed a_Kind)
{
    const judgement::TKindRow& Row = a_Fit.Judgement.vKinds[a_Kind];
    return Row.Reason == judgement::REASON_NONE ? Text(a_Fit, Row.LeaveReason, a_Kind) : "";
}

std::vector<std::size_t> SuspectOrder(const TFit& a_Fit)
{
    std::vector<std::size_t> viSuspects;
    for (std::size_t i = 0; i < a_Fit.vPoints.size(); ++i)
    {
        if (a_Fit.vPoints[i].bSuspect != 0)
        {
            viSuspects.push_back(i);
        }
    }
    const auto IsBefore = [&](std::size_t a_iFirst, std::size_t a_iSecond)
    {
        const judgement::TPointJudgement& First = a_Fit.vPoints[a_iFirst];
        const judgement::TPointJudgement& Second = a_Fit.vPoints[a_iSecond];
        return First.iDropped != 0 && Second.iDropped != 0 ? First.iDropped < Second.iDropped
               : First.iDropped != Second.iDropped         ? First.iDropped != 0
                                                           : First.dLength > Second.dLength;
    };
    std::stable_sort(viSuspects.begin(), viSuspects.end(), IsBefore);
    return viSuspects;
}

} // namespace fitpoints

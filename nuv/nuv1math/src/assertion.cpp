// assertion.cpp: the report of a broken internal invariant.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "assertion.h"

namespace nuv {

void ReportAssertion(const TReportChar* a_szPath, int a_iLine, const TReportChar* a_szCondition)
{
    TReportChar szText[REPORT_LENGTH];
    FormatReport(szText, a_szPath, a_iLine, a_szCondition);
    ShowTextAndWait(szText);
    EndProcess(); // for either answer: Retry cannot mend a broken invariant
}

} // namespace nuv

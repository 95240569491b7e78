// progress.h: a line on the terminal that tells how far a long run is.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#ifndef NUV_FITPOINTS_PROGRESS_H
#define NUV_FITPOINTS_PROGRESS_H

namespace fitpoints {

// If standard error is a terminal, a thread shows there from the next second on what the program does.
void StartProgress();

// Names what the program does now. The text must last as long as the program.
void ShowStage(const char* a_szStage);

// How much of this stage is done, 0 to 1. Without this call the line tells the seconds that the stage has taken.
void ShowFraction(double a_dFraction);

// Ends the thread and removes the line. Call it before anything else is written to standard error.
void HideProgress();

} // namespace fitpoints

#endif // NUV_FITPOINTS_PROGRESS_H

// header.cpp: nothing but the public header, as a program includes it.
// Copyright (c) 2026 the nuv1math authors
// SPDX-License-Identifier: MIT

#include "nuv1math.h"

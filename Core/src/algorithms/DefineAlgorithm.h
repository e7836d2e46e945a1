#pragma once

#include "zel/AlgoInfo.h"

/// What all algorithm classes have alike: how they are made and destroyed, and their entry in the registry.
#define ZEL_DEFINE_ALGORITHM(Name)   \
    Name::Name() = default;          \
    Name::~Name() = default;         \
    AlgoInfo* Name::getClassInfo() { \
        static AlgoInfo info(#Name); \
        return &info;                \
    }

#pragma once

#include "zel/AlgoInfo.h"

/// A class's entry in the registry.
#define ZEL_DEFINE_CLASS_INFO(Name)  \
    AlgoInfo* Name::getClassInfo() { \
        static AlgoInfo info(#Name); \
        return &info;                \
    }

/// What all algorithm classes have alike: how they are made and destroyed, and their entry in the registry.
#define ZEL_DEFINE_ALGORITHM(Name) \
    Name::Name() = default;        \
    Name::~Name() = default;       \
    ZEL_DEFINE_CLASS_INFO(Name)

/// The same of a child.
#define ZEL_DEFINE_CHILD(Name)                                                   \
    Name::Name(AbstractPrivateImplementation* parent) : BaseAlgorithm(parent) {} \
    Name::~Name() = default;                                                     \
    RefImpl<Name> Name::New(AbstractPrivateImplementation* parent) {             \
        return RefImpl<Name>(new Name(parent));                                  \
    }                                                                            \
    ZEL_DEFINE_CLASS_INFO(Name)

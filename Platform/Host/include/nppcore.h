#pragma once

#include "nppdefs.h"

#pragma once

/// The words in which kernels say what the threads of a block do. Here the thread that runs a block does the work of
/// all of its lanes, in SIMD registers: whatever the words say is independent from lane to lane must be so.

#include "lanes/Arithmetic.h"
#include "lanes/Block.h"
#include "lanes/Bundles.h"
#include "lanes/Channels.h"
#include "lanes/Items.h"
#include "lanes/Lines.h"
#include "lanes/Patches.h"
#include "lanes/Reductions.h"
#include "lanes/Sweeps.h"
#include "lanes/VoxelColumns.h"
#include "lanes/Voxels.h"

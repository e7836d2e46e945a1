#pragma once

/// The words in which kernels say what the threads of a block do. Here a lane is a thread, and each word a thin layer
/// over threadIdx. What each word promises is written beside its host form, in Platform/Host/include/lanes.

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

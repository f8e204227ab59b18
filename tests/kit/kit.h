// The test kit in one include.
#pragma once

#include <gtest/gtest.h>

#include "kit/allocator.h"
#include "kit/image.h"
#include "kit/memory.h"
#include "kit/random.h"
#include "kit/threads.h"
#include "kit/untouched.h"
#include "tevcv/types.h"

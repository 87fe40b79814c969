// What nearly every test includes; compiled once.
#pragma once

#include <gtest/gtest.h>

#include "support/Precompiled.h"

// An assertion about the code of a host exception.
#pragma once

#include "host/vor_exception.h"

#include <gtest/gtest.h>

/// Expects that the statement throws a TVORException with this code.
#define EXPECT_THROWS_CODE(statement, code)                                                                \
    try {                                                                                                  \
        (void)(statement);                                                                                 \
        ADD_FAILURE() << #statement " throws nothing";                                                     \
    } catch (const NKELVOR20::TVORException& exception) {                                                  \
        EXPECT_EQ(exception.GetStatusCode().GetCode(), static_cast<int>(NKELVOR20::TVORStatusCode::code)); \
    }

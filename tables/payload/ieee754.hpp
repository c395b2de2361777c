#pragma once

#include <cfloat>
#include <limits>

// Every rate is the result of operations on doubles, each rounded by itself, and is right to the last
// bit or wrong. A compiler that is told to reckon otherwise is refused; what Clang's macros do not
// tell, CMakeLists.txt looks for.
#if defined(__FAST_MATH__) || defined(__ASSOCIATIVE_MATH__) || defined(__RECIPROCAL_MATH__) ||     \
    (defined(__FINITE_MATH_ONLY__) && __FINITE_MATH_ONLY__) || defined(_M_FP_FAST)
#error "rates come out different with -ffast-math and what belongs to it: build without"
#endif
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53,
              "rates are written as doubles of IEC 559");
// 1 widens floats alone, and there are none.
static_assert(FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1,
              "rates come out different where doubles are computed with in more than their "
              "precision: build for SSE2, not for x87");

#pragma once

#include <cstdint>

namespace norvala {

// The result of every primitive: 0 success, negative an error, positive a warning.
enum class StatusCode : std::int32_t {
  Success = 0,

  AsymmetricKernel = 38,      // a pyramid-layer state was created from a kernel that is not symmetric; it is live
  NoDestinationOverlap = 30,  // the mapped region misses the destination region, or its row table had no memory
  NoSourceOverlap = 29,       // the source region's origin lies outside the source image
  QuadNotAffine = 28,         // the fourth vertex pair does not fit the transform of the first three; warp done
  UnknownProcessorCode = 21,  // the processor code is not in the table
  ProcessorNotVerified = 20,  // automatic selection could not confirm the processor; the level is set all the same

  BadArgument = -5,            // a selector outside its values, or a zero divisor of a pipeline filter
  NonPositiveSize = -6,        // a size below 1, or sizes that do not fit together
  NullPointer = -8,            // a required pointer is null
  WorkBufferUnavailable = -9,  // a work buffer or state object could not be allocated; nothing was written
  DivisionByZero = -10,        // division by a constant 0 or NaN
  UnsupportedDataType = -12,   // an element-type code that the primitive does not serve
  NonPositiveStep = -14,       // a row step below 1, or too small for the row
  BadTransformOrder = -15,     // order of a power-of-two transform outside 0..30
  BadNormalisation = -16,      // normalisation flag not 1, 2, 4 or 8
  WrongStateKind = -17,        // a state object whose kind tag is not the expected one
  UnknownInterpolation = -22,  // an interpolation selector that the primitive does not accept
  BadResizeFactor = -23,       // a resize factor not greater than 0
  UnsupportedMask = -33,       // a Gaussian mask code other than 33 and 55
  AnchorOutsideKernel = -34,   // a kernel anchor below 0 or not below the kernel length
  ZeroDivisor = -51,           // an integer filter's divisor is 0
  UnsupportedChannels = -53,   // a channel count other than 1 or 3
  BadCoefficients = -56,       // singular coefficients, a degenerate mapped region, a weight not above 0
  RegionTooSmall = -57,        // an effective source region narrower or lower than 2 pixels
  BadQuadrilateral = -58,      // a degenerate or non-convex quadrilateral
  MisalignedStep = -108,       // a row step of float data that is not a multiple of 4
  ResultRegionEmpty = -201,    // a scaled region smaller than half a pixel
};

}  // namespace norvala

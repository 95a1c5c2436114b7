/**
 * Names and sentences of the status codes, for messages. Nothing here is exported: the functions are compiled into the
 * program that includes this header.
 */
#ifndef ZEBCV_STATUS_H
#define ZEBCV_STATUS_H

#include "types.h"

/* X(code, sentence) for every code. */
#define ZEB_STATUS_CODES(X)                                                                              \
  X(zebStsOk, "success")                                                                                 \
  X(zebStsWarnDivByZero, "a relative norm had a zero denominator")                                       \
  X(zebStsWarnLinesTruncated, "more line segments were found than the output holds; the output is full") \
  X(zebStsWarnKernelNotSymmetric, "a pyramid kernel was not symmetric; its first half was used")         \
  X(zebStsErr, "an internal stage failed")                                                               \
  X(zebStsErrOverflow, "a derived count overflowed")                                                     \
  X(zebStsErrBadArgument, "an argument value is not allowed")                                            \
  X(zebStsErrSize, "a width, height, length or count is below 1, or a rectangle is not valid")           \
  X(zebStsErrRange, "a lower and upper bound are inverted")                                              \
  X(zebStsErrNullPointer, "a required pointer is null")                                                  \
  X(zebStsErrMemAlloc, "an allocation failed")                                                           \
  X(zebStsErrOutOfRange, "a point or value lies outside the image or its interval")                      \
  X(zebStsErrDataType, "the data-type selector is not supported")                                        \
  X(zebStsErrStep, "a row step is smaller than the row it must hold")                                    \
  X(zebStsErrContextMatch, "a state record does not carry the identifier of its kind")                   \
  X(zebStsErrThreshold, "a threshold is negative")                                                       \
  X(zebStsErrMaskSize, "the mask or kernel size is not supported or below 1")                            \
  X(zebStsErrAnchor, "the anchor lies outside the kernel")                                               \
  X(zebStsErrChannelCount, "the channel count is not one this function supports")                        \
  X(zebStsErrChannel, "the channel of interest is outside 1..3")                                         \
  X(zebStsErrNumChannels, "the channel count is not 1, 3 or 4")                                          \
  X(zebStsErrMetric, "a distance weight is not positive")                                                \
  X(zebStsErrNotEvenStep, "a row step is not a multiple of the element size")                            \
  X(zebStsErrBorder, "the border type is not supported by the function")                                 \
  X(zebStsErrNorm, "the norm selector is not supported by the function")                                 \
  X(zebStsErrFilterType, "the derivative-filter selector is not supported")

#ifdef __cplusplus
extern "C" {
#endif

/** The name of a status, "zebStsErrSize". "unknown status" for a number that is none. */
static inline const char* zebStatusName(ZebStatus status) {
#define ZEB_STATUS_NAME(code, sentence) \
  case code:                            \
    return #code;
  switch (status) { ZEB_STATUS_CODES(ZEB_STATUS_NAME) }
#undef ZEB_STATUS_NAME
  return "unknown status";
}

/** What a status means, "an allocation failed". "unknown status" for a number that is none. */
static inline const char* zebStatusText(ZebStatus status) {
#define ZEB_STATUS_TEXT(code, sentence) \
  case code:                            \
    return sentence;
  switch (status) { ZEB_STATUS_CODES(ZEB_STATUS_TEXT) }
#undef ZEB_STATUS_TEXT
  return "unknown status";
}

#ifdef __cplusplus
}
#endif

#endif

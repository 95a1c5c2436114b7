/**
 * Types, records, status codes and selector values.
 *
 * Conventions that hold for every function unless its own text says otherwise:
 *
 * - An image is a pointer to its first pixel, a row step and a size. The step is the distance in bytes from one row to
 *   the next. Channels are interleaved. Pointers and steps need no alignment beyond the rule below.
 * - A step must hold its row (width x channels x element size bytes), else zebStsErrStep. For elements wider than one
 *   byte it must be a multiple of the element size, else zebStsErrNotEvenStep.
 * - Argument order: sources, masks, destinations (each pointer then step), size, own parameters, scratch or state.
 * - Checks, first failure returned: null pointers (zebStsErrNullPointer), width or height below 1 (zebStsErrSize),
 *   steps too small (zebStsErrStep), steps that are no multiple (zebStsErrNotEvenStep), the function's own arguments in
 *   the order of the argument list, then the identifier of a state record (zebStsErrContextMatch).
 * - When a check fails nothing is written. No byte outside the described rows is read or written.
 * - A size query whose answer does not fit a signed 32-bit count returns zebStsErrOverflow; a function that has no
 *   legal buffer for a size returns it itself, as the last of its checks.
 * - Scratch buffers need no alignment and may hold anything; they are used only during the call.
 * - Calls may run in parallel as long as they share no destination, scratch buffer or state record that a call changes.
 * - A state record is used by functions of its kind, element type and channels only; another one, or memory that holds
 *   none, is refused with zebStsErrContextMatch. A state that holds pointers into itself may not be moved or copied;
 *   the text of each kind tells.
 * - No function takes more than 16 KB of stack; callers may keep it aligned to 4 bytes only. The largest is
 *   zebiInpaintInitAlloc_8u_C1R with 15 KB.
 * - Results are those of the default floating-point environment: round to nearest, denormals on. Other modes are
 *   left as they are found and may change results. Images whose values are 0 or of ordinary magnitude raise no
 *   exception but inexact and, where results are tiny, underflow; infinities, values that are not numbers and huge
 *   ones may raise any.
 * - Denormal values are computed with exactly, and slowly: float filters and pyramids of an image full of them take
 *   up to 45 times as long.
 */
#ifndef ZEBCV_TYPES_H
#define ZEBCV_TYPES_H

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Pixel types ---- */

typedef unsigned char Zeb8u;   /**< unsigned 8-bit */
typedef signed char Zeb8s;     /**< signed 8-bit */
typedef unsigned short Zeb16u; /**< unsigned 16-bit */
typedef signed short Zeb16s;   /**< signed 16-bit */
typedef signed int Zeb32s;     /**< signed 32-bit */
typedef float Zeb32f;          /**< 32-bit IEEE float */
typedef double Zeb64f;         /**< 64-bit IEEE float */

/* ---- Records, passed by value ---- */

/** Size of an image or region in pixels. */
typedef struct ZebiSize {
  int width;
  int height;
} ZebiSize;

/** A pixel position: column x, row y. */
typedef struct ZebiPoint {
  int x;
  int y;
} ZebiPoint;

/** A rectangle: first column x, first row y, width and height in pixels. */
typedef struct ZebiRect {
  int x;
  int y;
  int width;
  int height;
} ZebiRect;

/** A sub-pixel point, or the two parameters of a line. */
typedef struct ZebiPoint_32f {
  Zeb32f x;
  Zeb32f y;
} ZebiPoint_32f;

/** Version record, see zebcvGetLibVersion. */
typedef struct ZebLibraryVersion {
  int major;             /**< major version */
  int minor;             /**< minor version */
  int majorBuild;        /**< update number */
  int build;             /**< source revision number */
  char targetCpu[4];     /**< variant code, zero-padded: "q7", in 64 bits "x7" */
  const char* Name;      /**< "zebCV AVX2 (q7)" or "zebCV AVX2 (x7)" */
  const char* Version;   /**< the numbers above as text, for example "3.1.4 (r12345)" */
  const char* BuildDate; /**< month, day in two places, year, for example "Jan  5 2031" */
} ZebLibraryVersion;

/* ---- Status codes ---- */

/** Result of a call: 0 success, negative an error (nothing done), positive a warning (result defined as stated). */
typedef int ZebStatus;

enum {
  zebStsOk = 0,                      /**< success */
  zebStsWarnDivByZero = 6,           /**< a relative norm had a zero denominator */
  zebStsWarnLinesTruncated = 33,     /**< more line segments were found than the output holds; the output is full */
  zebStsWarnKernelNotSymmetric = 38, /**< a pyramid kernel was not symmetric; its first half was used */
  zebStsErr = -1,                    /**< an internal stage failed */
  zebStsErrOverflow = -2,            /**< a derived count overflowed */
  zebStsErrBadArgument = -5,         /**< an argument value is not allowed */
  zebStsErrSize = -6,                /**< a width, height, length or count is below 1, or a rectangle is not valid */
  zebStsErrRange = -7,               /**< a lower and upper bound are inverted */
  zebStsErrNullPointer = -8,         /**< a required pointer is null */
  zebStsErrMemAlloc = -9,            /**< an allocation failed */
  zebStsErrOutOfRange = -11,         /**< a point or value lies outside the image or its interval */
  zebStsErrDataType = -12,           /**< the data-type selector is not supported */
  zebStsErrStep = -14,               /**< a row step is smaller than the row it must hold */
  zebStsErrContextMatch = -17,       /**< a state record does not carry the identifier of its kind */
  zebStsErrThreshold = -18,          /**< a threshold is negative */
  zebStsErrMaskSize = -33,           /**< the mask or kernel size is not supported or below 1 */
  zebStsErrAnchor = -34,             /**< the anchor lies outside the kernel */
  zebStsErrChannelCount = -47,       /**< the channel count is not one this function supports */
  zebStsErrChannel = -52,            /**< the channel of interest is outside 1..3 */
  zebStsErrNumChannels = -53,        /**< the channel count is not 1, 3 or 4 */
  zebStsErrMetric = -56,             /**< a distance weight is not positive */
  zebStsErrNotEvenStep = -108,       /**< a row step is not a multiple of the element size */
  zebStsErrBorder = -225,            /**< the border type is not supported by the function */
  zebStsErrNorm = -229,              /**< the norm selector is not supported by the function */
  zebStsErrFilterType = -230         /**< the derivative-filter selector is not supported */
};

/* ---- Selector values ---- */

/** Border rule in the low four bits, in-memory side flags above them. */
typedef int ZebiBorderType;

enum {
  zebBorderConst = 0,          /**< outside pixels take a given constant */
  zebBorderRepl = 1,           /**< outside pixels repeat the nearest edge pixel */
  zebBorderWrap = 2,           /**< outside pixels wrap to the opposite edge */
  zebBorderMirror = 3,         /**< reflection about the edge pixel, which is not repeated */
  zebBorderMirrorR = 4,        /**< reflection with the edge pixel repeated */
  zebBorderInMem = 6,          /**< the pixels outside the region exist in memory and are read */
  zebBorderInMemTop = 0x10,    /**< rows above the region are in memory */
  zebBorderInMemBottom = 0x20, /**< rows below the region are in memory */
  zebBorderInMemLeft = 0x40,   /**< columns left of the region are in memory */
  zebBorderInMemRight = 0x80   /**< columns right of the region are in memory */
};

/** Mask-size selector. */
enum { zebMskSize3x3 = 33, zebMskSize5x5 = 55 };

/** Derivative-filter selector. */
enum { zebFilterSobel = 2, zebFilterScharr = 5 };

/** Interpolation mode of the pyramid layers. */
enum { zebInterLinear = 2 };

/** Magnitude selector. */
typedef int ZebNormType;

enum {
  zebNormInf = 1, /**< largest absolute value */
  zebNormL1 = 2,  /**< sum of absolute values */
  zebNormL2 = 4   /**< square root of the sum of squares */
};

/** Metric and neighbourhood selector. */
typedef int ZebiNorm;

enum {
  zebiNormInf = 0, /**< chessboard metric, 8-connected neighbourhood */
  zebiNormL1 = 1,  /**< city-block metric, 4-connected neighbourhood */
  zebiNormL2 = 2   /**< Euclidean metric */
};

/** Data-type selector. */
typedef int ZebDataType;

enum { zeb8u = 1, zeb8s = 3, zeb16u = 5, zeb16s = 7, zeb32f = 13, zeb64f = 19 };

#ifdef __cplusplus
}
#endif

#endif

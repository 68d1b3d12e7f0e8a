/**
 * @file
 * The constants of the library and of the chip. borvan_usb.h includes this file.
 *
 * All constants are enumerators: C and C++ programs can use them in `switch`, in array sizes and as
 * initial values.
 */
#pragma once

/* The header is also C, and must not follow advice that applies only to C++. */
/* NOLINTBEGIN(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */
/* NOLINTBEGIN(performance-enum-size) */
#include <stdint.h>

/** How the inline functions of these headers are declared: `static inline`, in C89 too. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 199901L)
#define BORVAN_USB_INLINE static inline
#else
#define BORVAN_USB_INLINE static __inline
#endif

/* ---- Cameras --------------------------------------------------------------------------------- */

/** Sizes of the fields of a UsbDeviceInfo. */
enum BorvanFieldSize {
  kBorvanTextFieldSize = 120, /**< bytes of a path or name field */
  kBorvanIdFieldSize = 4      /**< characters of an ID field */
};

/* ---- Widths ---------------------------------------------------------------------------------- */

/**
 * Width flags of the register accesses. They are not symmetric: a write uses the wide form for
 * every flag but 0, a read uses it only for 1 and the byte form for every other flag.
 */
enum BorvanRegisterWidth {
  kBorvanRegisterByte = 0, /**< 8-bit value */
  kBorvanRegisterWide = 1  /**< 32-bit value */
};

/** Width modes of the I2C accesses: bits of the register address, bits of the data. */
enum BorvanI2cMode {
  kBorvanI2cAddress8Data8 = 0,   /**< 8-bit address, 8-bit data */
  kBorvanI2cAddress16Data8 = 1,  /**< 16-bit address, 8-bit data */
  kBorvanI2cAddress16Data16 = 2, /**< 16-bit address, 16-bit data */
  kBorvanI2cAddress32Data8 = 3,  /**< 32-bit address, 8-bit data */
  kBorvanI2cAddress32Data16 = 4, /**< 32-bit address, 16-bit data */
  kBorvanI2cAddress32Data32 = 5  /**< 32-bit address, 32-bit data */
};

/* ---- Chip and flash -------------------------------------------------------------------------- */

/** The register that shows what the chip's firmware supports. */
enum BorvanFeature {
  kBorvanFeatureRegister = 0x1A3, /**< its address; a byte register */
  kBorvanFeatureFastI2c = 0x20    /**< its bit for fast I2C lists, in packets */
};

/** How the flash is erased and programmed, and how runs of registers are read. */
enum BorvanTransferSize {
  kBorvanFlashSectorSize = 4096,   /**< bytes that one erase clears */
  kBorvanFlashPieceSize = 60,      /**< bytes of one packet while flash is programmed */
  kBorvanFlashErasedByte = 0xFF,   /**< what an erased byte reads as */
  kBorvanRegistersPerTransfer = 56 /**< registers that one transfer of a run reads */
};

/** Addresses in list files that are markers, not registers. */
enum BorvanListMarker {
  kBorvanMarkerPause = 0xFFFF,          /**< a pause, in milliseconds */
  kBorvanMarkerFirstDelay = 0xFFFD,     /**< register lists: the first delay value */
  kBorvanMarkerSecondDelay = 0xFFFE,    /**< register lists: the second delay value */
  kBorvanMarkerSlave = 0xFFF8,          /**< I2C lists: the slave address */
  kBorvanMarkerWidthCode = 0xFFFE,      /**< I2C lists, after the slave address: the width code */
  kBorvanLongestPauseMilliseconds = 255 /**< a longer pause is ignored */
};

/* ---- Progress -------------------------------------------------------------------------------- */

/** The low half of GetProgressInfo's value, the percentage. */
static const uint64_t kBorvanProgressPercentMask = 0xFFFFFFFFu;

/** The high half of GetProgressInfo's value, the status. */
enum BorvanProgressShift {
  kBorvanProgressStatusShift = 32 /**< bits to shift the value right by */
};

/* ---- Exceptions ------------------------------------------------------------------------------ */

/** How programs in the ABI of Microsoft's compiler see an exception of the library. */
enum BorvanException {
  kBorvanExceptionCode = 0x20474343 /**< the code of the structured exception */
};

/* NOLINTEND(performance-enum-size) */
/* NOLINTEND(modernize-deprecated-headers, modernize-use-nullptr, modernize-use-using) */

/*
 * The contract with libOvMediaKit.so: pixel conversion, encoding to memory, white balance.
 *
 * Status convention: 0 for success, else a code of OvStatus.h. A handle keeps work buffers between calls. Any
 * thread may call with any handle at any time, several threads also with one; a handle that is destroyed in
 * the middle of a call stays until the call ends.
 */
#ifndef OV_MEDIA_KIT_H
#define OV_MEDIA_KIT_H

#include "OvLayout.h"
#include "OvPixelType.h"
#include "OvStatus.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Bayer interpolation methods. */
enum { OV_BAYER_NEAREST = 0, OV_BAYER_BILINEAR = 1, OV_BAYER_HAMILTON = 2 };

/* Output of OV_MP_SaveImage. */
enum { OV_IMAGE_BMP = 0, OV_IMAGE_JPEG = 1 };

typedef struct _OV_CONVERT_PIXEL_INFO_ {
    uint16_t width;
    uint16_t height;
    uint32_t sourceType; /* _OV_PIXEL_TYPE_ */
    const uint8_t* source;
    uint32_t sourceLength;    /* bytes */
    uint32_t destinationType; /* _OV_PIXEL_TYPE_: 0, 27 or 32 */
    uint8_t* destination;
    uint32_t destinationLength; /* output: bytes written */
    uint32_t destinationCapacity;
    uint32_t bayerMethod;
    uint8_t reserved[36];
} _OV_CONVERT_PIXEL_INFO_;

typedef struct _OV_IMAGE_INFO_ {
    uint32_t sourceType; /* _OV_PIXEL_TYPE_ */
    uint32_t padding0;
    uint8_t* source;       /* OV_MP_WhiteBalanceProcess writes here; the others only read */
    uint32_t sourceLength; /* bytes */
    uint16_t width;
    uint16_t height;
    uint32_t imageType; /* OV_IMAGE_BMP or OV_IMAGE_JPEG */
    uint32_t padding1;
    uint8_t* output;
    uint32_t outputLength; /* output: bytes written */
    uint32_t outputCapacity;
    uint32_t jpegQuality; /* 1 to 100 */
    uint8_t reserved[36];
} _OV_IMAGE_INFO_;

typedef struct _OV_DECODE_INFO_ {
    const uint8_t* source; /* JPEG data */
    uint32_t sourceLength;
    uint32_t decodeKind; /* always 1 */
    uint8_t reserved0[8];
    uint8_t* destination;
    uint32_t destinationCapacity;
    uint8_t reserved1[44];
} _OV_DECODE_INFO_;

/* Gains; 34 more bytes travel with them unread. */
typedef struct _OV_WHITE_BALANCE_PARAM_ {
    uint16_t red;
    uint16_t green;
    uint16_t blue;
    uint8_t opaque[34];
} _OV_WHITE_BALANCE_PARAM_;

OV_SIZE(_OV_CONVERT_PIXEL_INFO_, 80);
OV_AT(_OV_CONVERT_PIXEL_INFO_, width, 0, width);
OV_AT(_OV_CONVERT_PIXEL_INFO_, height, 2, height);
OV_AT(_OV_CONVERT_PIXEL_INFO_, sourceType, 4, sourceType);
OV_AT(_OV_CONVERT_PIXEL_INFO_, source, 8, source);
OV_AT(_OV_CONVERT_PIXEL_INFO_, sourceLength, 16, sourceLength);
OV_AT(_OV_CONVERT_PIXEL_INFO_, destinationType, 20, destinationType);
OV_AT(_OV_CONVERT_PIXEL_INFO_, destination, 24, destination);
OV_AT(_OV_CONVERT_PIXEL_INFO_, destinationLength, 32, destinationLength);
OV_AT(_OV_CONVERT_PIXEL_INFO_, destinationCapacity, 36, capacity);
OV_AT(_OV_CONVERT_PIXEL_INFO_, bayerMethod, 40, method);
OV_AT(_OV_CONVERT_PIXEL_INFO_, reserved, 44, reserved);
OV_SIZE(_OV_IMAGE_INFO_, 88);
OV_AT(_OV_IMAGE_INFO_, sourceType, 0, sourceType);
OV_AT(_OV_IMAGE_INFO_, source, 8, source);
OV_AT(_OV_IMAGE_INFO_, sourceLength, 16, sourceLength);
OV_AT(_OV_IMAGE_INFO_, width, 20, width);
OV_AT(_OV_IMAGE_INFO_, height, 22, height);
OV_AT(_OV_IMAGE_INFO_, imageType, 24, imageType);
OV_AT(_OV_IMAGE_INFO_, output, 32, output);
OV_AT(_OV_IMAGE_INFO_, outputLength, 40, outputLength);
OV_AT(_OV_IMAGE_INFO_, outputCapacity, 44, capacity);
OV_AT(_OV_IMAGE_INFO_, jpegQuality, 48, quality);
OV_AT(_OV_IMAGE_INFO_, reserved, 52, reserved);
OV_SIZE(_OV_DECODE_INFO_, 80);
OV_AT(_OV_DECODE_INFO_, source, 0, source);
OV_AT(_OV_DECODE_INFO_, sourceLength, 8, sourceLength);
OV_AT(_OV_DECODE_INFO_, decodeKind, 12, kind);
OV_AT(_OV_DECODE_INFO_, destination, 24, destination);
OV_AT(_OV_DECODE_INFO_, destinationCapacity, 32, capacity);
OV_SIZE(_OV_WHITE_BALANCE_PARAM_, 40);
OV_AT(_OV_WHITE_BALANCE_PARAM_, red, 0, red);
OV_AT(_OV_WHITE_BALANCE_PARAM_, green, 2, green);
OV_AT(_OV_WHITE_BALANCE_PARAM_, blue, 4, blue);

/* Null on failure. */
void* OV_MP_CreateHandle(void);
uint32_t OV_MP_DestroyHandle(void* handle);

/*
 * Converts a picture without padding between its rows to grey (0), RGB (27) or 32-bit colour (32). 10 and 12
 * bits are scaled to 8 by their most significant bits. bayerMethod is looked at for Bayer types only. Writes
 * destinationLength, 0 on failure.
 *
 * OV_STATUS_NOT_SUPPORTED: unknown type; OV_STATUS_INVALID_PARAMETER: no record or buffer, a side of 0, a
 * source shorter than the picture, a size that the type can't have, an unknown Bayer method;
 * OV_STATUS_BUFFER_FULL: the result is larger than destinationCapacity; OV_STATUS_RESOURCE: no memory.
 */
uint32_t OV_MP_ConvertPixelType(void* handle, _OV_CONVERT_PIXEL_INFO_* record);

/* Decodes a JPEG into 24-bit RGB. */
uint32_t OV_MP_Decode(void* handle, _OV_DECODE_INFO_* record, uint32_t jpegLength, uint32_t zero);

/* Encodes a picture to memory. */
uint32_t OV_MP_SaveImage(void* handle, _OV_IMAGE_INFO_* record);

/* Bytes of a picture of that type, halves rounded towards zero; 0 for an unknown type or more than 32 bits
 * can say. */
uint32_t OV_MP_GetPixelSize(uint32_t pixelType, uint32_t width, uint32_t height, uint32_t zero);

uint32_t OV_MP_GetWhiteBalance(void* handle, _OV_IMAGE_INFO_* record, _OV_WHITE_BALANCE_PARAM_* gains);
uint32_t OV_MP_WhiteBalanceProcess(void* handle, _OV_IMAGE_INFO_* record, _OV_WHITE_BALANCE_PARAM_* gains);

/* Feed and end a running recording. OV_STATUS_NOT_SUPPORTED where the library offers no way to start one. */
uint32_t OV_MP_InputData(void* handle, const uint8_t* data, uint32_t length);
uint32_t OV_MP_StopRecord(void* handle);

#ifdef __cplusplus
}
#endif

#endif

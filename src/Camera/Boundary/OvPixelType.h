/*
 * The two numberings of pixel formats that cross the boundary: the camera's own code (GigE Vision GVSP pixel
 * format list) and the media library's.
 */
#ifndef OV_PIXEL_TYPE_H
#define OV_PIXEL_TYPE_H

#include <stdint.h>

/* The camera's pixel code; 64 bits wide, so that -1 ("none known yet") is apart from every 32-bit code. */
typedef int64_t OvGvspPixelType;

#define OV_GVSP_NONE ((OvGvspPixelType)-1)
#define OV_GVSP_MONO8 ((OvGvspPixelType)INT64_C(0x01080001))
#define OV_GVSP_MONO10 ((OvGvspPixelType)INT64_C(0x01100003))
#define OV_GVSP_MONO12 ((OvGvspPixelType)INT64_C(0x01100005))
#define OV_GVSP_MONO10_PACKED ((OvGvspPixelType)INT64_C(0x010C0004))
#define OV_GVSP_MONO12_PACKED ((OvGvspPixelType)INT64_C(0x010C0006))
#define OV_GVSP_BAYER_GR8 ((OvGvspPixelType)INT64_C(0x01080008))
#define OV_GVSP_BAYER_RG8 ((OvGvspPixelType)INT64_C(0x01080009))
#define OV_GVSP_BAYER_GB8 ((OvGvspPixelType)INT64_C(0x0108000A))
#define OV_GVSP_BAYER_BG8 ((OvGvspPixelType)INT64_C(0x0108000B))
#define OV_GVSP_BAYER_GR10 ((OvGvspPixelType)INT64_C(0x0110000C))
#define OV_GVSP_BAYER_RG10 ((OvGvspPixelType)INT64_C(0x0110000D))
#define OV_GVSP_BAYER_GB10 ((OvGvspPixelType)INT64_C(0x0110000E))
#define OV_GVSP_BAYER_BG10 ((OvGvspPixelType)INT64_C(0x0110000F))
#define OV_GVSP_BAYER_GR12 ((OvGvspPixelType)INT64_C(0x01100010))
#define OV_GVSP_BAYER_RG12 ((OvGvspPixelType)INT64_C(0x01100011))
#define OV_GVSP_BAYER_GB12 ((OvGvspPixelType)INT64_C(0x01100012))
#define OV_GVSP_BAYER_BG12 ((OvGvspPixelType)INT64_C(0x01100013))
#define OV_GVSP_BAYER_GR10_PACKED ((OvGvspPixelType)INT64_C(0x010C0026))
#define OV_GVSP_BAYER_RG10_PACKED ((OvGvspPixelType)INT64_C(0x010C0027))
#define OV_GVSP_BAYER_GB10_PACKED ((OvGvspPixelType)INT64_C(0x010C0028))
#define OV_GVSP_BAYER_BG10_PACKED ((OvGvspPixelType)INT64_C(0x010C0029))
#define OV_GVSP_BAYER_GR12_PACKED ((OvGvspPixelType)INT64_C(0x010C002A))
#define OV_GVSP_BAYER_RG12_PACKED ((OvGvspPixelType)INT64_C(0x010C002B))
#define OV_GVSP_BAYER_GB12_PACKED ((OvGvspPixelType)INT64_C(0x010C002C))
#define OV_GVSP_BAYER_BG12_PACKED ((OvGvspPixelType)INT64_C(0x010C002D))
#define OV_GVSP_YUV422_PACKED ((OvGvspPixelType)INT64_C(0x0210001F)) /* U Y V Y */
#define OV_GVSP_YUV422_YUYV ((OvGvspPixelType)INT64_C(0x02100032))   /* Y U Y V */
#define OV_GVSP_RGB8_PACKED ((OvGvspPixelType)INT64_C(0x02180014))
#define OV_GVSP_JPEG ((OvGvspPixelType)INT64_C(0x80180001)) /* private code, no GVSP one */

/* The media library's numbering. Records carry it as 32 bits. */
typedef enum _OV_PIXEL_TYPE_ {
    OV_PIXEL_MONO8 = 0,
    OV_PIXEL_MONO10 = 1,
    OV_PIXEL_MONO12 = 2,
    OV_PIXEL_MONO10_PACKED = 3,
    OV_PIXEL_MONO12_PACKED = 4,
    OV_PIXEL_BAYER_GR8 = 5,
    OV_PIXEL_BAYER_RG8 = 6,
    OV_PIXEL_BAYER_GB8 = 7,
    OV_PIXEL_BAYER_BG8 = 8,
    OV_PIXEL_BAYER_GB10 = 9,
    OV_PIXEL_BAYER_GB10_PACKED = 10,
    OV_PIXEL_BAYER_BG10 = 11,
    OV_PIXEL_BAYER_BG10_PACKED = 12,
    OV_PIXEL_BAYER_RG10 = 13,
    OV_PIXEL_BAYER_RG10_PACKED = 14,
    OV_PIXEL_BAYER_GR10 = 15,
    OV_PIXEL_BAYER_GR10_PACKED = 16,
    OV_PIXEL_BAYER_GB12 = 17,
    OV_PIXEL_BAYER_GB12_PACKED = 18,
    OV_PIXEL_BAYER_BG12 = 19,
    OV_PIXEL_BAYER_BG12_PACKED = 20,
    OV_PIXEL_BAYER_RG12 = 21,
    OV_PIXEL_BAYER_RG12_PACKED = 22,
    OV_PIXEL_BAYER_GR12 = 23,
    OV_PIXEL_BAYER_GR12_PACKED = 24,
    OV_PIXEL_YUV422_PACKED = 25, /* U Y V Y */
    OV_PIXEL_YUV422_YUYV = 26,   /* Y U Y V */
    OV_PIXEL_RGB8 = 27,
    OV_PIXEL_RGB32 = 32 /* 32-bit colour, an output only: bytes blue, green, red, 255 */
} _OV_PIXEL_TYPE_;

#endif

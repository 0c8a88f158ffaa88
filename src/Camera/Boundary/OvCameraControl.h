/*
 * The contract with libOvCameraControl.so: finding cameras, opening them, receiving frames.
 *
 * Status convention: 0 for success, else a code of OvStatus.h. No call raises. Any call may be made from any
 * thread; OV_CC_GetOneFrameTimeout may wait on one thread while others read statistics, the XML or registers
 * of the same handle. Records are little-endian with natural alignment; text fields are NUL-terminated.
 */
#ifndef OV_CAMERA_CONTROL_H
#define OV_CAMERA_CONTROL_H

#include "OvLayout.h"
#include "OvStatus.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Transport layers; a mask for OV_CC_EnumDevices is their sum. */
enum { OV_TLAYER_GIGE = 1, OV_TLAYER_USB3 = 4 };

/* Access modes: exclusive control is the only one in use. */
enum { OV_ACCESS_EXCLUSIVE = 1 };

/* Messages of the exception callback: the device is gone, or its control was lost. */
enum { OV_EXCEPTION_DISCONNECT = 0x8001 };

enum { OV_MAX_DEVICES = 256 };

/* GigE Vision part of a device record. Addresses are in host order: the first octet is in the top byte. */
typedef struct _OV_CC_GIGE_DEVICE_INFO_ {
    uint32_t ipConfigOptions; /* bootstrap 0x0010: what the device can do (bit 31 manual, 30 DHCP, 29 LLA) */
    uint32_t ipConfigCurrent; /* bootstrap 0x0014: what is switched on */
    uint32_t currentIp;       /* 0: none */
    uint32_t currentSubnetMask;
    uint32_t defaultGateway;
    char manufacturerName[32];
    char modelName[32];
    char deviceVersion[32];
    char manufacturerInfo[48];
    char serialNumber[16];
    char userDefinedName[16]; /* may be GB18030 */
    uint32_t hostInterface;   /* address of the local interface on which the camera was found */
    uint8_t reserved[340];
} _OV_CC_GIGE_DEVICE_INFO_;

/* USB3 Vision part of a device record. */
typedef struct _OV_CC_USB3_DEVICE_INFO_ {
    uint8_t controlInEndpoint; /* 0 marks a device in its boot loader */
    uint8_t controlOutEndpoint;
    uint8_t streamEndpoint;
    uint8_t eventEndpoint;
    uint16_t vendorId;
    uint16_t productId;
    uint32_t deviceNumber;
    char deviceGuid[64];
    char vendorName[64];
    char modelName[64];
    char familyName[64];
    char deviceVersion[64];
    char manufacturerName[64];
    char serialNumber[64]; /* the identity of a USB3 camera */
    char userDefinedName[64];
    uint32_t usbVersion; /* BCD; above 0x2FF is USB 3.0 or later */
    uint8_t reserved[12];
} _OV_CC_USB3_DEVICE_INFO_;

/* One device. */
typedef struct _OV_CC_DEVICE_INFO_ {
    uint16_t majorVersion;
    uint16_t minorVersion;
    uint32_t macHigh;     /* low 16 bits: the first two bytes of the MAC address */
    uint32_t macLow;      /* the other four, most significant first */
    uint32_t nTLayerType; /* OV_TLAYER_GIGE or OV_TLAYER_USB3 */
    uint8_t reserved[16];
    union {
        _OV_CC_GIGE_DEVICE_INFO_ gige;
        _OV_CC_USB3_DEVICE_INFO_ usb3;
    } transport;
} _OV_CC_DEVICE_INFO_;

/* What OV_CC_EnumDevices fills. The records belong to the library and stay valid until its next call: copy at
 * once. The caller clears the list first. */
typedef struct _OV_CC_DEVICE_INFO_LIST_ {
    uint32_t deviceCount;
    uint32_t padding;
    _OV_CC_DEVICE_INFO_* devices[OV_MAX_DEVICES];
} _OV_CC_DEVICE_INFO_LIST_;

/* What OV_CC_GetOneFrameTimeout tells of a frame. The program reads width, height and frameLength; the other
 * fields are this library's own additions, for tools and tests. */
typedef struct _OV_CC_FRAME_OUT_INFO_ {
    uint16_t width;       /* pixels */
    uint16_t height;      /* pixels; lines really sent by a line-scan camera */
    uint32_t pixelFormat; /* GVSP pixel code */
    uint16_t offsetX;
    uint16_t offsetY;
    uint32_t payloadType;     /* GVSP payload type: 1 image, 4 chunk data, ... */
    uint64_t blockId;         /* the camera's frame id */
    uint64_t deviceTimestamp; /* ns of the camera's clock, or its ticks where the frequency is unknown */
    uint64_t hostTimestamp;   /* ns, CLOCK_REALTIME, at the frame's end */
    uint32_t frameLength;     /* bytes of this frame */
    uint32_t lostPackets;     /* packets of this frame that did not come */
    uint32_t frameState;      /* 0 complete, 1 incomplete */
    uint8_t reserved[212];
} _OV_CC_FRAME_OUT_INFO_;

/* Transport statistics since the start of grabbing. */
typedef struct _OV_MATCH_INFO_NET_DETECT_ {
    int64_t receivedBytes;
    int64_t lostPackets;
    uint32_t errorCount; /* frames that were not delivered or delivered incomplete */
    uint32_t lostFrames; /* frames lost because no buffer was free */
    uint32_t resentPackets;
    uint8_t reserved[12];
} _OV_MATCH_INFO_NET_DETECT_;

enum { OV_MATCH_INFO_NET_DETECT = 1 };

/* Query for OV_CC_GetAllMatchInfo. */
typedef struct _OV_ALL_MATCH_INFO_ {
    uint32_t type; /* OV_MATCH_INFO_NET_DETECT */
    uint32_t padding0;
    void* info;        /* _OV_MATCH_INFO_NET_DETECT_ */
    uint32_t infoSize; /* bytes of that record, 40 */
    uint32_t padding1;
} _OV_ALL_MATCH_INFO_;

OV_SIZE(_OV_CC_DEVICE_INFO_, 572);
OV_AT(_OV_CC_DEVICE_INFO_, majorVersion, 0, major);
OV_AT(_OV_CC_DEVICE_INFO_, minorVersion, 2, minor);
OV_AT(_OV_CC_DEVICE_INFO_, macHigh, 4, macHigh);
OV_AT(_OV_CC_DEVICE_INFO_, macLow, 8, macLow);
OV_AT(_OV_CC_DEVICE_INFO_, nTLayerType, 12, tlayer);
OV_AT(_OV_CC_DEVICE_INFO_, reserved, 16, reserved);
OV_AT(_OV_CC_DEVICE_INFO_, transport, 32, transport);
OV_SIZE(_OV_CC_GIGE_DEVICE_INFO_, 540);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.ipConfigOptions, 32, ipOptions);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.ipConfigCurrent, 36, ipCurrentWord);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.currentIp, 40, currentIp);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.currentSubnetMask, 44, mask);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.defaultGateway, 48, gateway);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.manufacturerName, 52, gigeManufacturer);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.modelName, 84, gigeModel);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.deviceVersion, 116, gigeVersion);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.manufacturerInfo, 148, gigeInfo);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.serialNumber, 196, gigeSerial);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.userDefinedName, 212, gigeUserName);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.hostInterface, 228, hostInterface);
OV_AT(_OV_CC_DEVICE_INFO_, transport.gige.reserved, 232, gigeReserved);
OV_SIZE(_OV_CC_USB3_DEVICE_INFO_, 540);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.controlInEndpoint, 32, controlIn);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.deviceGuid, 44, guid);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.vendorName, 108, vendor);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.modelName, 172, usbModel);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.familyName, 236, family);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.deviceVersion, 300, usbDeviceVersion);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.manufacturerName, 364, usbManufacturer);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.serialNumber, 428, usbSerial);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.userDefinedName, 492, usbUserName);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.usbVersion, 556, usbVersion);
OV_AT(_OV_CC_DEVICE_INFO_, transport.usb3.reserved, 560, usbReserved);
OV_SIZE(_OV_CC_DEVICE_INFO_LIST_, 2056);
OV_AT(_OV_CC_DEVICE_INFO_LIST_, deviceCount, 0, count);
OV_AT(_OV_CC_DEVICE_INFO_LIST_, devices, 8, devices);
OV_SIZE(_OV_CC_FRAME_OUT_INFO_, 264);
OV_AT(_OV_CC_FRAME_OUT_INFO_, width, 0, width);
OV_AT(_OV_CC_FRAME_OUT_INFO_, height, 2, height);
OV_AT(_OV_CC_FRAME_OUT_INFO_, frameLength, 40, frameLength);
OV_SIZE(_OV_MATCH_INFO_NET_DETECT_, 40);
OV_AT(_OV_MATCH_INFO_NET_DETECT_, receivedBytes, 0, received);
OV_AT(_OV_MATCH_INFO_NET_DETECT_, lostPackets, 8, lost);
OV_AT(_OV_MATCH_INFO_NET_DETECT_, errorCount, 16, errors);
OV_SIZE(_OV_ALL_MATCH_INFO_, 24);
OV_AT(_OV_ALL_MATCH_INFO_, type, 0, type);
OV_AT(_OV_ALL_MATCH_INFO_, info, 8, info);
OV_AT(_OV_ALL_MATCH_INFO_, infoSize, 16, infoSize);

typedef void (*OvExceptionCallBack)(uint32_t message, void* user);

/* Lists the devices of the layers in transportMask. At most half a second. */
uint32_t OV_CC_EnumDevices(uint32_t transportMask, _OV_CC_DEVICE_INFO_LIST_* list);

/* Makes a handle from a record, which may hold no more than the layer and an IP address. Nothing is opened,
 * and the device need not be reachable. */
uint32_t OV_CC_CreateHandle(void** handle, const _OV_CC_DEVICE_INFO_* device);
uint32_t OV_CC_CreateHandleWithoutLog(void** handle, const _OV_CC_DEVICE_INFO_* device);

/* Closes the device where needed and frees the handle. */
uint32_t OV_CC_DestroyHandle(void* handle);

/* Takes exclusive control. OV_STATUS_ACCESS_DENIED when another host, or another handle, has it. */
uint32_t OV_CC_OpenDevice(void* handle, uint32_t accessMode, uint16_t switchoverKey);
uint32_t OV_CC_CloseDevice(void* handle);

/* A boolean, in the low byte alone: the device answers and could be opened now. */
uint32_t OV_CC_IsDeviceAccessible(const _OV_CC_DEVICE_INFO_* device, uint32_t accessMode);

/* Fills the record from the live device, open or not. */
uint32_t OV_CC_GetDeviceInfo(void* handle, _OV_CC_DEVICE_INFO_* device);

/* The callback runs on a thread of the library. A null callback takes it away; after that call has returned
 * the former one is not running and does not run again (except when the call is made from inside the
 * callback). */
uint32_t OV_CC_RegisterExceptionCallBack(void* handle, OvExceptionCallBack callback, void* user);

/* Number of frame buffers inside the library; counts from the next start. */
uint32_t OV_CC_SetImageNodeNum(void* handle, uint32_t count);

/* Non-zero: frames of which a packet was lost are dropped (and counted). Zero: they are delivered. */
uint32_t OV_CC_SetThrowAbnormalImage(void* handle, uint8_t on);

uint32_t OV_CC_StartGrabbing(void* handle);
uint32_t OV_CC_StopGrabbing(void* handle);

/* Copies the oldest frame not yet fetched. OV_STATUS_NO_DATA after timeoutMs without one;
 * OV_STATUS_BUFFER_FULL when the frame is larger than capacity (it is dropped and counted). The caller clears
 * info before the call. */
uint32_t OV_CC_GetOneFrameTimeout(void* handle, uint8_t* buffer, uint32_t capacity,
                                  _OV_CC_FRAME_OUT_INFO_* info, uint32_t timeoutMs);

/* The largest packet size (bytes, IP header included) that reaches this host unfragmented; 0 or below:
 * unknown. */
int32_t OV_CC_GetOptimalPacketSize(void* handle);

/* A GenApi_3_0::IPort* on the open device, valid until it is closed; null on failure. */
void* OV_CC_GetTlProxy(void* handle);

uint32_t OV_CC_GetAllMatchInfo(void* handle, _OV_ALL_MATCH_INFO_* query);

/* Gives the camera a new address (host order) until its next reset; mask and gateway stay where they fit. */
uint32_t OV_GIGE_ForceIp(void* handle, uint32_t ip);

/* Copies the camera's GenICam XML, unzipped. *length is set also when capacity was too small. */
uint32_t OV_XML_GetGenICamXML(void* handle, uint8_t* buffer, uint32_t capacity, uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif

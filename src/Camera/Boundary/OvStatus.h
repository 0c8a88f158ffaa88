/*
 * Status codes of the camera and media libraries: 0 is success, everything else has its top bit set.
 * The render library has a convention of its own (see OVRender.h).
 */
#ifndef OV_STATUS_H
#define OV_STATUS_H

#include <stdint.h>

#define OV_STATUS_OK UINT32_C(0x00000000)

/* General. */
#define OV_STATUS_INVALID_HANDLE UINT32_C(0x80000000) /* null, unknown or already destroyed */
#define OV_STATUS_NOT_SUPPORTED UINT32_C(0x80000001)  /* this camera or library has no such thing */
#define OV_STATUS_BUFFER_FULL UINT32_C(0x80000002)    /* the caller's buffer is too small */
#define OV_STATUS_CALL_ORDER UINT32_C(0x80000003)     /* not allowed in the present state */
#define OV_STATUS_INVALID_PARAMETER UINT32_C(0x80000004)
#define OV_STATUS_RESOURCE UINT32_C(0x80000006)     /* memory, thread, descriptor or file not to be had */
#define OV_STATUS_NO_DATA UINT32_C(0x80000007)      /* nothing arrived in the time given */
#define OV_STATUS_PRECONDITION UINT32_C(0x80000008) /* the environment changed: device lost, busy, ... */
#define OV_STATUS_VERSION UINT32_C(0x80000009)
#define OV_STATUS_UNKNOWN UINT32_C(0x800000FF)

/* GenICam: one per class of exception. */
#define OV_STATUS_GENICAM_GENERIC UINT32_C(0x80000100)
#define OV_STATUS_GENICAM_ARGUMENT UINT32_C(0x80000101)
#define OV_STATUS_GENICAM_RANGE UINT32_C(0x80000102)
#define OV_STATUS_GENICAM_PROPERTY UINT32_C(0x80000103)
#define OV_STATUS_GENICAM_RUNTIME UINT32_C(0x80000104)
#define OV_STATUS_GENICAM_LOGICAL UINT32_C(0x80000105)
#define OV_STATUS_GENICAM_ACCESS UINT32_C(0x80000106)
#define OV_STATUS_GENICAM_TIMEOUT UINT32_C(0x80000107)
#define OV_STATUS_GENICAM_DYNAMIC_CAST UINT32_C(0x80000108)

/* GigE Vision. */
#define OV_STATUS_GVCP_NOT_IMPLEMENTED UINT32_C(0x80000200)
#define OV_STATUS_INVALID_ADDRESS UINT32_C(0x80000201)
#define OV_STATUS_WRITE_PROTECTED UINT32_C(0x80000202)
#define OV_STATUS_ACCESS_DENIED UINT32_C(0x80000203) /* another host holds the device */
#define OV_STATUS_BUSY UINT32_C(0x80000204)          /* the device did not answer the opening in time */
#define OV_STATUS_PACKET UINT32_C(0x80000205)        /* an answer that is malformed or does not fit */
#define OV_STATUS_NETWORK UINT32_C(0x80000206)       /* no route, interface down, no answer */
#define OV_STATUS_IP_CONFLICT UINT32_C(0x80000221)   /* the address is taken by another device */

#endif

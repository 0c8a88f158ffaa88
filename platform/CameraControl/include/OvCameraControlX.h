/*
 * What libOvCameraControl.so offers beyond the contract of OvCameraControl.h: extended counters and switches
 * for tools, tests and benchmarks. A program must run without it: look the functions up at run time.
 *
 * Statuses and threads as in OvCameraControl.h.
 */
#ifndef OV_CAMERA_CONTROL_X_H
#define OV_CAMERA_CONTROL_X_H

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C includes this header too */

#ifdef __cplusplus
extern "C" {
#endif

/* Counters of the present stream, or after its stop of the last one, since its start. Zero before the first.
 */
typedef struct OVX_CC_STATISTICS {
    uint32_t size;              /* set by the caller: bytes of this record that it knows */
    uint32_t bufferSize;        /* bytes of each frame buffer inside the library */
    uint64_t receivedBytes;     /* of stream packets */
    uint64_t receivedPackets;   /* all of them, also those that were of no use */
    uint64_t lostPackets;       /* not there when their frame was closed, resends counted in */
    uint64_t resendRequests;    /* packets asked for again */
    uint64_t resentPackets;     /* that came upon this; so many were lost at first */
    uint64_t duplicatedPackets; /* came twice */
    uint64_t latePackets;       /* came after their frame was closed */
    uint64_t errorPackets;      /* malformed, or "not available" in answer to a resend request */
    uint64_t unbufferedPackets; /* came while no buffer was free */
    uint64_t completeFrames;    /* received whole */
    uint64_t incompleteFrames;  /* closed with packets missing */
    uint64_t unfitFrames;       /* larger than the buffers, or lost while these were exchanged */
    uint64_t vanishedFrames;    /* not one packet came (a gap in the camera's frame ids) */
    uint64_t unbufferedFrames;  /* lost because no buffer was free: the caller fetches too slowly */
    uint64_t deliveredFrames;   /* fetched by the caller */
    uint64_t droppedFrames;     /* incomplete ones, while OV_CC_SetThrowAbnormalImage is on */
    uint64_t tooLargeFrames;    /* larger than the caller's buffer */
    uint64_t bufferExchanges;   /* the buffers followed a changed frame size */
    /* Not fetched when the stream was stopped. From then on completeFrames plus incompleteFrames is the sum
     * of these, the delivered, the dropped and the too large ones. */
    uint64_t unfetchedFrames;
} OVX_CC_STATISTICS;

/* Fills the first statistics->size bytes at most, which must be at least 8. */
uint32_t OVX_CC_GetStatistics(void* handle, OVX_CC_STATISTICS* statistics);

/* Options of streams; they count from the next start of grabbing. */
enum {
    OVX_OPTION_PACKET_RESEND = 1, /* 1 (default): lost packets are asked for again; 0: they are not */
    /* 1 (default): receive by a packet socket where the system allows it (CAP_NET_RAW); 0: by a plain UDP
     * socket. The environment variable OV_CC_PACKET_SOCKET=off makes 0 the default. */
    OVX_OPTION_PACKET_SOCKET = 2
};

/* OV_STATUS_NOT_SUPPORTED for an unknown option, OV_STATUS_INVALID_PARAMETER for an unknown value. */
uint32_t OVX_CC_SetOption(void* handle, uint32_t option, uint32_t value);

/* Waits until the library has cleaned up behind cameras that died while they were open. OV_STATUS_NO_DATA
 * when that takes longer. */
uint32_t OVX_CC_WaitIdle(uint32_t timeoutMs);

/* What OV_CC_EnumDevices has met since the library was loaded. */
typedef struct OVX_CC_FINDER_STATISTICS {
    uint32_t size;             /* set by the caller: bytes of this record that it knows */
    uint32_t reserved;         /* 0 */
    uint64_t calls;            /* of OV_CC_EnumDevices */
    uint64_t found;            /* devices of the latest call, also beyond the list's end */
    uint64_t beyondLimit;      /* of those, left out of the list (it holds OV_MAX_DEVICES) */
    uint64_t usbUnreadable;    /* of the latest call: USB3 Vision devices whose strings can't be read (no
                                  permission?) */
    uint64_t failedSends;      /* questions that the system refused to send */
    uint64_t droppedAnswers;   /* all that came and was no answer; of those: */
    uint64_t malformedAnswers; /* of a wrong length */
    uint64_t foreignAnswers;   /* to something else, or from another place than they said */
} OVX_CC_FINDER_STATISTICS;

/* Fills the first statistics->size bytes at most, which must be at least 8. */
uint32_t OVX_CC_GetFinderStatistics(OVX_CC_FINDER_STATISTICS* statistics);

/* Where GigE Vision cameras are looked for from now on. interfaces: the only interfaces to use, by name;
 * empty or null: all. addresses: IPv4 addresses to ask one by one besides (cameras behind a router, further
 * loopback addresses). Lists are separated by commas or blanks. The environment variables OV_CC_INTERFACES
 * and OV_CC_ADDRESSES say the same at the start. */
uint32_t OVX_CC_SetDiscovery(const char* interfaces, const char* addresses);

#ifdef __cplusplus
}
#endif

#endif

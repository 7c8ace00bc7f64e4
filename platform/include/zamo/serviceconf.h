/*
 * libzamoserviceconf: the catalogue of the machine's network services and their ports.
 *
 * It is the union of the files *.json in /usr/zamo/etc.defaults/services.d/ (shipped) and
 * /usr/zamo/etc/services.d/ (added; a file there replaces the shipped one of the same name). The
 * file's name without ".json" is the service's name. A file that cannot be used, be it for a wrong
 * type or port, is left out with a log line. The functions may be called from any thread and do not
 * throw; a catalogue may be read by several threads at once.
 */
#ifndef ZAMO_SERVICECONF_H
#define ZAMO_SERVICECONF_H

#include <zamo/core.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ZAMOFwServiceList ZAMOFwServiceList;

/* The protocol of a service's ports. */
enum {
    ZAMO_FW_SERVICE_TCP = 1,
    ZAMO_FW_SERVICE_UDP = 2,
    ZAMO_FW_SERVICE_BOTH = 3,
    ZAMO_FW_SERVICE_ICMP = 4,
    ZAMO_FW_SERVICE_IGMP = 32,
};

/* A pair that the service does not have holds protocol 0 and a NULL list. */
typedef struct ZAMOFwService {
    const char* name;
    int valid; /* 0: the service is known but switched off in the catalogue */
    int dstProtocol;
    VLIBCSzList* dstPorts; /* a port ("22") or a range ("6000-6010") each */
    int srcProtocol;
    VLIBCSzList* srcPorts;
} ZAMOFwService;

/*
 * Loads the whole catalogue and returns the number of services. 0 (there are none) or negative (the
 * last error is set) with `*catalogue` NULL.
 */
int ZAMOFwServiceEnum(ZAMOFwServiceList** catalogue);

/* The service's record, valid as long as the catalogue, or NULL. */
const ZAMOFwService* ZAMOFWServiceFind(const ZAMOFwServiceList* catalogue, const char* name);

/* Releases the catalogue; NULL is allowed. */
void ZAMOFwServiceFree(ZAMOFwServiceList* catalogue);

#ifdef __cplusplus
}
#endif

#endif

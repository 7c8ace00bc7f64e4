/*
 * libzamonetsdk: the machine's network interfaces, and checks of address texts. Every function may
 * be called from any thread. None of them throws.
 */
#ifndef ZAMO_NETSDK_H
#define ZAMO_NETSDK_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct VLIBNetInterface {
    char name[16];
    char reserved[48];
} VLIBNetInterface;

enum {
    /* Interfaces that are up and have an address (a link-local one counts), without loopback. */
    VLIB_NET_INTERFACE_CONFIGURED = 8,
};

/*
 * Fills at most `capacity` records with the interfaces of the given kind, each once, in the order
 * of the kernel's interface numbers. The number of records filled, or negative with the last error
 * set (zamo/core.h).
 */
int VLIBNetGetInterfaceInfo(VLIBNetInterface* records, int capacity, int kind);

/*
 * Writes the name of the PPPoE interface: the key `interface` of /run/zamo/pppoe.conf when such an
 * interface exists, else an empty text. 0, or negative with the last error set.
 */
int ZAMOPPPoeIntfGet(char* buffer, int size);

/* 1 for an IPv4 address in dotted-quad form, else 0; NULL is allowed. */
int BlVLIBIsIpAddr(const char* text);

/* 1 for an IPv6 address without zone and prefix length, else 0; NULL is allowed. */
int BlVLIBIsv6IpAddrValid(const char* text);

#ifdef __cplusplus
}
#endif

#endif

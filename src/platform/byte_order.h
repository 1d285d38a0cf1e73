// htonl, ntohl, htons and ntohs, from wherever the system keeps them.
#ifndef TVRSCN_PLATFORM_BYTE_ORDER_H
#define TVRSCN_PLATFORM_BYTE_ORDER_H

#if defined(_WIN32)
#include <winsock2.h>
#else
#include <arpa/inet.h>
#endif

#endif  // TVRSCN_PLATFORM_BYTE_ORDER_H

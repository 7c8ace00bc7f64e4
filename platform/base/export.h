#ifndef PLATFORM_BASE_EXPORT_H
#define PLATFORM_BASE_EXPORT_H

/* Marks a function of the public headers at its definition; the link maps name them once more. */
#define ZAMO_EXPORT __attribute__((visibility("default")))

#endif

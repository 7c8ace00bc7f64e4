#ifndef PLATFORM_BASE_EXPORT_H
#define PLATFORM_BASE_EXPORT_H

/* Marks the definition of a public function. The link maps list the same functions. */
#define ZAMO_EXPORT __attribute__((visibility("default")))

#endif

// Marks what the shared library offers to other programs.
#ifndef ZAMOFIREWALL_EXPORT_H
#define ZAMOFIREWALL_EXPORT_H

#define ZAMOFW_EXPORT __attribute__((visibility("default")))

#endif

// Visibility of the host layer's public classes and functions.
//
// libhostsdk.so is built with hidden visibility; everything that a plug-in or a
// host program may call is marked HOSTSDK_API. The mark also keeps the vtables
// and type information of the host classes in one place, so that a plug-in built
// with hidden visibility and the host share them (dynamic_cast works across the
// boundary).
#ifndef HOSTSDK_BASE_EXPORT_H
#define HOSTSDK_BASE_EXPORT_H

#define HOSTSDK_API __attribute__((visibility("default")))

#endif

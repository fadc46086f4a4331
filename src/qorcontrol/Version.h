#ifndef QORCONTROL_VERSION_H
#define QORCONTROL_VERSION_H

/* The version of the headers; the libraries tell theirs (QorVersion, qorcontrol::version). Also for
   C and for resource compilers, so numbers and texts only. This is the one place where it is
   written. */

#define QOR_VERSION_MAJOR 0
#define QOR_VERSION_MINOR 1
#define QOR_VERSION_PATCH 0
#define QOR_VERSION_TEXT "0.1.0"

/* As one number that grows: 0x00MMmmpp. */
#define QOR_VERSION ((QOR_VERSION_MAJOR << 16) | (QOR_VERSION_MINOR << 8) | QOR_VERSION_PATCH)

#endif

/* Conversion between Unicode (UTF-8, UTF-16LE, UTF-16BE) and the system's code pages, with the standard
   functions of this name and their errors (EILSEQ, EINVAL, E2BIG). Stateful encodings and conversions between
   two code pages are not supported. */
#ifndef VENTRIX_ICONV_H
#define VENTRIX_ICONV_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void* iconv_t;

/* (iconv_t)-1 and EINVAL if one of the encodings is unknown, or neither is Unicode. */
iconv_t iconv_open(const char* to, const char* from);
size_t iconv(iconv_t converter, char** in, size_t* inLeft, char** out, size_t* outLeft);
int iconv_close(iconv_t converter);

#ifdef __cplusplus
}
#endif

#endif

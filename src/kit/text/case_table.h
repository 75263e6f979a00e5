// The lower-case form of each byte in the Mac OS Roman set, on which the host Roman encoding is laid out.
// It is applied to raw bytes in any encoding: UTF-8 text folds its ASCII letters, and some bytes of its
// sequences too.
#pragma once

namespace ventrix {

/// The lower-case form of the byte; the byte itself if it has none.
unsigned char Q_FoldByte(unsigned char byte);

}  // namespace ventrix

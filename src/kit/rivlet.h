// The host's network-file library, looked up when it is first asked. Where it is absent, a text with the
// scheme of a network protocol is a network file, and every transfer fails. Results are in kit memory, and
// the caller frees them with Q_Free; on failure they are null.
#pragma once

namespace ventrix {

/// Whether the text names a network file. False for null.
bool Q_IsNetFile(const char* text);

/// True for what is no network file, and for null.
bool Q_IsLocalPath(const char* text);

/// Stores the absolute URL of a path seen from a base. 0 on success, else 1 or the library's answer; 1 unless
/// the base is a network file.
int Q_AbsoluteUrl(const char* base, const char* path, char** result);

/// Stores the URL of the path relative to the base. 0 on success, else 1 or the library's answer; 1 unless
/// both are network files.
int Q_RelativeUrl(const char* base, const char* path, char** result);

}  // namespace ventrix

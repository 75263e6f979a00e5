// The client "QlDispatcher": names the application that a file belongs to and tells that application's DTD.
// The application is known by the file's public id, system id or root element, its DTD by the XML catalogs.
#pragma once

#include "desk/clients/client.h"

namespace ventrix::desk {

struct DispatcherSettings {
    NativePath catalog;  ///< Native path of a catalog that is asked before the machine's own; may be empty.
};

/// A client that understands
///     ChooseAppForFile PATH                      -> one text, the application's name
///     StructAppInfo -appName NAME -info DTDPath  -> one text, the DTD's native path
/// The answer is native because it ends up in the document, which any program of the machine may read. PATH
/// is the rest of the command, blanks included. What is not known gives an empty list and status 0.
Client MakeDispatcherClient(DispatcherSettings settings);

}  // namespace ventrix::desk

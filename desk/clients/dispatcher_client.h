// The client "QlDispatcher": finds out which application a document belongs to, by its public id, system id
// or root element, and where the application's DTD is, through the XML catalogs.
#pragma once

#include "desk/clients/client.h"
#include "desk/clients/entity_dtds.h"

namespace ventrix::desk {

struct DispatcherSettings {
    NativePath catalog;  ///< A catalog that is asked before the machine's own; may be empty.
    DeclaringDocument declaringDocument = {};  ///< May be empty.
};

/// A client for the commands
///     ChooseAppForFile PATH                      -> one string, the application's name
///     StructAppInfo -appName NAME -info DTDPath  -> one string, the native path of the DTD
/// PATH is the rest of the command, including spaces. The DTD's path is native because it is written into the
/// document, for any program of the machine to read. If nothing is known, the list is empty and the status is
/// 0. For the file of an external entity, the name is the path of a DTD that declares the entities of its
/// document.
Client MakeDispatcherClient(DispatcherSettings settings);

}  // namespace ventrix::desk

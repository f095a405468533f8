#pragma once

#include <string>
#include <vector>

#include "Diagnostics/Edit/EditableFile.h"
#include "Diagnostics/Text/Edit.h"

/// Reads a document for a command that changes it only with --write. Throws `CommandError` when it cannot be
/// read, or not be replaced although that is wanted.
EditableFile OpenDocument(const std::string& name, bool write);

/// Prints the edits as a diff on stdout. False when the reader has gone.
bool PrintDiff(const std::string& name, const EditableFile& file, const std::vector<Edit>& edits);

/// Replaces the document by one with these edits, completely or not at all. Throws `CommandError` when it
/// cannot be replaced or has changed since it was read.
void WriteEdits(const EditableFile& file, const std::vector<Edit>& edits);

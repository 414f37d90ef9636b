// Files whose rows are gone for good. Their names stand in the catalogue from the transaction that
// dropped the rows until the files are removed, so that no crash in between leaves them for ever.
#pragma once

namespace local {

class Library;

// Removes them. What cannot be removed now waits for the next time; never throws.
void removeDiscardedFiles(Library& library) noexcept;

} // namespace local

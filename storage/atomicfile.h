#pragma once

class QByteArray;
class QString;

// Replaces the file at `path` with `bytes` so that a cut at any moment (a failed write, a pen
// switched off) leaves either the old file or the new one, whole: the bytes go to a temporary
// file beside it, which is synced, closed and renamed over the old one; then the folder is
// synced, so that the new name is on the card too. Every step is checked. 0 on success; -1 on
// any failure, the old file then left as it was and the temporary removed.
int writeFileAtomically(const QString &path, const QByteArray &bytes);

// Syncs the folder holding `path`: a name renamed into it is on the card only then. 0 or -1.
int syncFolderOf(const QString &path);

#pragma once

/// A disk that refuses what is asked of it, for this program: what SQLite calls to use files goes through
/// here.
namespace FailingDisk
{

/// Kinds of calls, to be joined by |.
enum EKind : unsigned
{
    ekWrite = 1, ///< also cuts and flushes
    ekRead = 2,
    ekOpen = 4,
    ekOpenToWrite = 8, ///< as ekOpen, but opening only to read is no such call
    ekLock = 16
};

/// From now on the disk takes so many more calls of these kinds and refuses the next one.
/// @param failures  how many it refuses, one after the other; negative: all
/// @param problem   errno of each
void RefuseAfter(int calls, int problem, int failures, unsigned kinds = ekWrite);

/// The disk is well.
void Mend();

/// Calls of these kinds since RefuseAfter, refused ones included.
int Calls();

/// Reads of all files since RefuseAfter, whatever it refuses.
int Reads();

} // namespace FailingDisk

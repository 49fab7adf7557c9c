#pragma once

/// A disk that refuses to be written, for this program: what it calls to write files goes through here.
namespace FailingDisk
{

/// From now on the disk takes so many more writes (also cuts and flushes) and refuses the next one.
/// @param failures  how many it refuses, one after the other; negative: all
/// @param problem   errno of each
void RefuseAfter(int writes, int problem, int failures);

/// The disk is well.
void Mend();

/// Writes since the last of the calls above, refused ones included.
int Writes();

} // namespace FailingDisk

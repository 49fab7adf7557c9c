// Compiled for the sake of the headers that CMake puts in front of it.

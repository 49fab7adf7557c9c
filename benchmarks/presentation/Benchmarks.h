#pragma once

namespace Benchmarks
{

void RegisterTrees(); ///< what screens show of the active tops
void RegisterDepth(); ///< the same below one error, in families and in a chain of many levels
void RegisterCodes(); ///< friendly codes
void RegisterTexts(); ///< histories and files of texts

} // namespace Benchmarks

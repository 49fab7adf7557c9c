#pragma once

namespace Benchmarks
{

void RegisterTrees();    ///< the lists of top errors
void RegisterGrouping(); ///< the step behind them
void RegisterLoading();  ///< reading configurations
void RegisterRaising();  ///< raising, clearing, finding

} // namespace Benchmarks

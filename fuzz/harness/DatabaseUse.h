#pragma once

namespace Faultkeeper
{
class CErrorDatabase;
}

namespace Fuzz
{

/// Does with a database what owners, displays and service tools do, and expects what holds for every
/// configuration: errors are found by their identifiers, requests take effect, tops are members of their
/// groups, trees can be built and rebuilt. Where the hierarchy unfolds into more than a screen could ever
/// show, trees and listings are left out.
void UseDatabase(Faultkeeper::CErrorDatabase& database);

} // namespace Fuzz

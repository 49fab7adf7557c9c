#ifndef FAULTKEEPERCTL_PHONEKEY_H
#define FAULTKEEPERCTL_PHONEKEY_H

#include <cstddef>
#include <string>
#include <vector>

/// The form in which a state key is read out on the phone: groups of five letters, "GGYGT SHZZQ", in which
/// nothing that is heard, read or typed wrongly goes unnoticed, and the group to be said again is named.
///
/// - The letters are G to Z without I, O and U: none looks like a digit or like another one, and none is a
///   digit of a key, so the two forms cannot be taken for each other.
/// - The values of the letters are 0 (G) to 16 (Z), and all sums are taken modulo 17, a prime.
/// - The first four letters of a group, c1 to c4, are digits of the key; behind the key's last digit comes Z
///   up to the end of the group. The fifth, c5, is the check letter: c1 + 2 c2 + 3 c3 + 4 c4 - c5 is the mark
///   of the group's place, 7 for each group in front of it, and 7 more for the last group.
///
/// So these are noticed always: one wrong letter in a group, two letters of a group that have changed places,
/// groups up to 15 places apart that have, a group that is missing or said twice, and a key that ends too
/// early. The form is in the hands of technicians and support: it stays as it is.
namespace Faultkeeper::Apps
{

constexpr std::size_t kPhoneGroupLetters = 5;

/// The groups of a key with blanks between them.
/// @param key  digits 0-9 and A-F, as many as you like; none gives ""
std::string PhoneKey(const std::string& key);

/// What came of reading groups.
struct SPhoneReading
{
    std::string key;                ///< the digits; "" if something is wrong
    std::vector<std::size_t> wrong; ///< numbers of the groups that do not fit, the first group being 1
    std::string problem;            ///< what is wrong, with these numbers; "" if nothing is
};

/// Reads what was typed, large or small letters, with blanks and dashes of all kinds wherever they may be.
SPhoneReading ReadPhoneKey(const std::string& typed);

/// Was this meant to be groups of letters rather than the digits of a key?
bool LooksLikePhoneKey(const std::string& typed);

/// The text in capitals and without blanks and dashes.
std::string BareKey(const std::string& typed);

} // namespace Faultkeeper::Apps

#endif

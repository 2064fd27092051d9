#pragma once

#include <string>

/**
 * Writes one language of a VobSub pair as a pair of its own. Where a file has several in turn the library decodes all that
 * lie between two pictures of the wanted one, and shows the last.
 * Throws a Failure where a file cannot be read or written.
 * @param strTo  the index to write; its pictures go beside it.
 * @return false, with nothing written, where no other language lies between, or the index is not one of plain text.
 */
bool SeparateVobSubTrack(const std::string &strIndex, int nTrack, const std::string &strTo);

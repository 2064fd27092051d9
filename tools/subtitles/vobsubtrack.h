#pragma once

#include <string>

/**
 * Writes one language of a VobSub pair as a pair of its own. Needed for a .sub file with interleaved languages: the
 * library decodes everything between two pictures of the wanted language and shows the last one, whatever its language.
 * Throws a Failure if a file cannot be read or written.
 * @param strTo  the index to write; its .sub file is written beside it.
 * @return false, with nothing written, if no other language is interleaved, the index is not plain text, or its
 *         positions run backwards.
 */
bool SeparateVobSubTrack(const std::string &strIndex, int nTrack, const std::string &strTo);

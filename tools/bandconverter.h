#pragma once

#include "pictureformat.h"

#include <map>

/** Rows of a picture, from the first to the one after the last. */
struct Band {
    int nTop = 0;
    int nBottom = 0;

    int Rows() const { return nBottom - nTop; }
};

/** Converts bands of rows between a video format and packed RGB. */
class BandConverter
{
public:
    /** To be called before anything else, and whenever the format changes. */
    void SetFormat(const PictureFormat &format);

    /** The band to convert so that the rows from nTop to nBottom come out right. */
    Band BandAround(int nTop, int nBottom) const;

    void ToRgb(const AVFrame &video, const Band &band, AVFrame &rgb);
    void FromRgb(const AVFrame &rgb, const Band &band, AVFrame &video);

private:
    struct Scalers {
        ScalerPtr pToRgb;
        ScalerPtr pFromRgb;
    };

    Scalers &ScalersFor(int nRows);
    void Convert(SwsContext *pScaler, const AVFrame &from, const Band &band, AVFrame &to) const;

    PictureFormat m_format;
    std::map<int, Scalers> m_listScalers;
};

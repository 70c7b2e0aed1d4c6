// Names and meanings of EXIF's fields (JEITA CP-3451E, tables 3 to 15).
#pragma once

#include <cstdint>

namespace norv {

// How a value is shown.
enum class FieldForm {
  plain,     // texts as they are, numbers one behind the other
  exposure,  // seconds: "1/250 s"
  aperture,  // "f/2.8"
  steps,     // a logarithm to base 2 of the exposure: in the unit behind it
  word,      // a number that stands for a word of the row
  utf16,     // of bytes
  comment,   // a text behind eight bytes that say its encoding
  version,   // four digits
  size,      // of what only its maker can read
};

struct FieldRow {
  uint16_t tag;
  const char* name;
  FieldForm form = FieldForm::plain;
  const char* more = "";  // the unit, or the words with commas between: "1 manual,2 program"
};

inline constexpr FieldRow kImageFields[] = {
    {269, "DocumentName"},
    {270, "ImageDescription"},
    {271, "Make"},
    {272, "Model"},
    {305, "Software"},
    {306, "DateTime"},
    {315, "Artist"},
    {316, "HostComputer"},
    {318, "WhitePoint"},
    {319, "PrimaryChromaticities"},
    {529, "YCbCrCoefficients"},
    {531, "YCbCrPositioning", FieldForm::word, "1 centred,2 co-sited"},
    {532, "ReferenceBlackWhite"},
    {18246, "Rating"},
    {18249, "RatingPercent"},
    {33432, "Copyright"},
    {40091, "XPTitle", FieldForm::utf16},
    {40092, "XPComment", FieldForm::utf16},
    {40093, "XPAuthor", FieldForm::utf16},
    {40094, "XPKeywords", FieldForm::utf16},
    {40095, "XPSubject", FieldForm::utf16},
    {50341, "PrintImageMatching", FieldForm::size},
};

inline constexpr FieldRow kExifFields[] = {
    {33434, "ExposureTime", FieldForm::exposure},
    {33437, "FNumber", FieldForm::aperture},
    {34850, "ExposureProgram", FieldForm::word,
     "0 not defined,1 manual,2 normal,3 aperture priority,4 shutter priority,5 creative,6 action,7 portrait,"
     "8 landscape"},
    {34855, "ISOSpeedRatings"},
    {34864, "SensitivityType"},
    {34866, "RecommendedExposureIndex"},
    {36864, "ExifVersion", FieldForm::version},
    {36867, "DateTimeOriginal"},
    {36868, "DateTimeDigitized"},
    {36880, "OffsetTime"},
    {36881, "OffsetTimeOriginal"},
    {36882, "OffsetTimeDigitized"},
    {37121, "ComponentsConfiguration", FieldForm::size},
    {37122, "CompressedBitsPerPixel"},
    {37377, "ShutterSpeedValue", FieldForm::steps, "EV"},
    {37378, "ApertureValue", FieldForm::steps, "EV"},
    {37379, "BrightnessValue", FieldForm::steps, "EV"},
    {37380, "ExposureBiasValue", FieldForm::steps, "EV"},
    {37381, "MaxApertureValue", FieldForm::steps, "EV"},
    {37382, "SubjectDistance", FieldForm::steps, "m"},
    {37383, "MeteringMode", FieldForm::word,
     "0 unknown,1 average,2 centre-weighted,3 spot,4 several spots,5 pattern,6 partial,255 other"},
    {37384, "LightSource", FieldForm::word,
     "0 unknown,1 daylight,2 fluorescent,3 tungsten,4 flash,9 fine weather,10 cloudy,11 shade,12 daylight fluorescent,"
     "13 day white fluorescent,14 cool white fluorescent,15 white fluorescent,17 standard light A,18 standard light B,"
     "19 standard light C,20 D55,21 D65,22 D75,23 D50,24 studio tungsten,255 other"},
    {37385, "Flash", FieldForm::word,
     "0 not fired,1 fired,5 fired but no light came back,7 fired and light came back,8 on but not fired,9 fired always,"
     "16 off,24 automatic and not fired,25 automatic and fired,32 there is none"},
    {37386, "FocalLength", FieldForm::steps, "mm"},
    {37396, "SubjectArea"},
    {37500, "MakerNote", FieldForm::size},
    {37510, "UserComment", FieldForm::comment},
    {37520, "SubSecTime"},
    {37521, "SubSecTimeOriginal"},
    {37522, "SubSecTimeDigitized"},
    {40960, "FlashpixVersion", FieldForm::version},
    {40961, "ColorSpace", FieldForm::word, "1 sRGB,2 Adobe RGB,65535 uncalibrated"},
    {40962, "PixelXDimension"},
    {40963, "PixelYDimension"},
    {40964, "RelatedSoundFile"},
    {41486, "FocalPlaneXResolution"},
    {41487, "FocalPlaneYResolution"},
    {41488, "FocalPlaneResolutionUnit", FieldForm::word, "1 none,2 inch,3 centimetre"},
    {41493, "ExposureIndex"},
    {41495, "SensingMethod", FieldForm::word,
     "1 not defined,2 one-chip colour area,3 two-chip colour area,4 three-chip colour area,5 colour sequential area,"
     "7 trilinear,8 colour sequential linear"},
    {41728, "FileSource", FieldForm::word, "1 film scanner,2 print scanner,3 camera"},
    {41729, "SceneType", FieldForm::word, "1 photographed"},
    {41730, "CFAPattern", FieldForm::size},
    {41985, "CustomRendered", FieldForm::word, "0 normal,1 custom"},
    {41986, "ExposureMode", FieldForm::word, "0 automatic,1 manual,2 bracketed"},
    {41987, "WhiteBalance", FieldForm::word, "0 automatic,1 manual"},
    {41988, "DigitalZoomRatio"},
    {41989, "FocalLengthIn35mmFilm", FieldForm::steps, "mm"},
    {41990, "SceneCaptureType", FieldForm::word, "0 standard,1 landscape,2 portrait,3 night"},
    {41991, "GainControl", FieldForm::word, "0 none,1 low up,2 high up,3 low down,4 high down"},
    {41992, "Contrast", FieldForm::word, "0 normal,1 soft,2 hard"},
    {41993, "Saturation", FieldForm::word, "0 normal,1 low,2 high"},
    {41994, "Sharpness", FieldForm::word, "0 normal,1 soft,2 hard"},
    {41996, "SubjectDistanceRange", FieldForm::word, "0 unknown,1 macro,2 close,3 distant"},
    {42016, "ImageUniqueID"},
    {42032, "CameraOwnerName"},
    {42033, "BodySerialNumber"},
    {42034, "LensSpecification"},
    {42035, "LensMake"},
    {42036, "LensModel"},
    {42037, "LensSerialNumber"},
    {42240, "Gamma"},
};

inline constexpr FieldRow kGpsFields[] = {
    {0, "GPSVersionID"},
    {1, "GPSLatitudeRef"},
    {2, "GPSLatitude"},
    {3, "GPSLongitudeRef"},
    {4, "GPSLongitude"},
    {5, "GPSAltitudeRef", FieldForm::word, "0 above sea level,1 below sea level"},
    {6, "GPSAltitude", FieldForm::steps, "m"},
    {7, "GPSTimeStamp"},
    {8, "GPSSatellites"},
    {9, "GPSStatus"},
    {10, "GPSMeasureMode"},
    {11, "GPSDOP"},
    {12, "GPSSpeedRef"},
    {13, "GPSSpeed"},
    {14, "GPSTrackRef"},
    {15, "GPSTrack"},
    {16, "GPSImgDirectionRef"},
    {17, "GPSImgDirection"},
    {18, "GPSMapDatum"},
    {19, "GPSDestLatitudeRef"},
    {20, "GPSDestLatitude"},
    {21, "GPSDestLongitudeRef"},
    {22, "GPSDestLongitude"},
    {23, "GPSDestBearingRef"},
    {24, "GPSDestBearing"},
    {25, "GPSDestDistanceRef"},
    {26, "GPSDestDistance"},
    {27, "GPSProcessingMethod", FieldForm::comment},
    {28, "GPSAreaInformation", FieldForm::comment},
    {29, "GPSDateStamp"},
    {30, "GPSDifferential"},
    {31, "GPSHPositioningError", FieldForm::steps, "m"},
};

}  // namespace norv

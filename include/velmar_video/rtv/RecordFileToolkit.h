/// \file
/// Coordinates of recordings, and the size of a JPEG.
#ifndef VELMAR_VIDEO_RTV_RECORD_FILE_TOOLKIT_H
#define VELMAR_VIDEO_RTV_RECORD_FILE_TOOLKIT_H

#include "velmar_video/export.h"

/// Radius of the meridian, metres, at the latitude that RecordFileToolkit::initRadius() was last
/// given; 0 until then.
extern VELMAR_VIDEO_API double g_meridianRadius;
/// The same of the parallel.
extern VELMAR_VIDEO_API double g_parallelRadius;

/// Coordinates of recordings: NDS units, degrees, metres.
///
/// Longitude stands before latitude in every pair. (lon0, lat0) is the origin in degrees, x runs
/// east and y north of it in metres. Any thread, except that initRadius(), abs2Rel() and
/// rel2Abs() share the two radii of the whole process without a lock.
class VELMAR_VIDEO_API RecordFileToolkit {
 public:
  /// 2^30 NDS units are 90 degrees.
  static double NDS2Degree(int nds);
  /// Truncates towards zero. A value that does not fit is cut to the nearest that does.
  static int Degree2NDS(double degrees);
  /// Degrees as radians.
  static double toRadians(double degrees);

  // By fixed coefficients: good near the origin. Longitudes are not wrapped.

  /// Degrees of a place x, y from the origin.
  static void toGPS(double lon0, double lat0, double x, double y, double& lon, double& lat);
  /// Metres from the origin.
  static void toRelative(double lon0, double lat0, double lon, double lat, double& x, double& y);

  // By the radii of the WGS 84 ellipsoid at one latitude.

  /// Radius of curvature of the meridian, metres.
  static double calculateMr_(double latitude);
  /// Radius of the parallel, metres.
  static double calculatePr_(double latitude);
  /// Sets the two radii for every later abs2Rel() and rel2Abs() of the process. Without it the
  /// former gives 0 and the latter no number.
  static void initRadius(double latitude);
  /// Metres from the origin, the short way round: a difference of 180 degrees of longitude or more
  /// is wrapped once.
  static void abs2Rel(double lon0, double lat0, double lon, double lat, double& x, double& y);
  /// Degrees of a place x, y from the origin. A longitude of exactly 180 becomes -180, and one of
  /// exactly -180 becomes 180; this is intended.
  static void rel2Abs(double lon0, double lat0, double x, double y, double& lon, double& lat);

  /// Reads a JPEG's size in pixels from its header; false if there is none.
  /// \param width, height  each with 4 writable bytes behind it, of which the JPEG reader writes
  ///                       all: an unsigned short alone is too small
  /// Each successful call leaves a decompressor handle allocated. Both are intended.
  static bool getJPEGResolution(const char* data, unsigned int size, unsigned short* width,
                                unsigned short* height);
};

#endif

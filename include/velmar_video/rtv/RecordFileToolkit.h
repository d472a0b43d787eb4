/// \file
/// Coordinates of recordings, and the size of a JPEG.
#ifndef VELMAR_VIDEO_RTV_RECORD_FILE_TOOLKIT_H
#define VELMAR_VIDEO_RTV_RECORD_FILE_TOOLKIT_H

#include "velmar_video/export.h"

/// Radius of the meridian in metres at the latitude of the last RecordFileToolkit::initRadius(); 0
/// before the first.
extern VELMAR_VIDEO_API double g_meridianRadius;
/// Radius of the parallel in metres, under the same conditions.
extern VELMAR_VIDEO_API double g_parallelRadius;

/// Coordinates of recordings: NDS units, degrees, metres.
///
/// Longitude comes before latitude in every pair. (lon0, lat0) is the origin in degrees; x are
/// metres east of it and y metres north. Thread-safe, except that initRadius(), abs2Rel() and
/// rel2Abs() share the two radii of the whole process without a lock.
class VELMAR_VIDEO_API RecordFileToolkit {
 public:
  /// 2^30 NDS units are 90 degrees.
  static double NDS2Degree(int nds);
  /// Truncates towards zero. A value out of range gives the nearest one in range.
  static int Degree2NDS(double degrees);
  /// Degrees as radians.
  static double toRadians(double degrees);

  // These two use fixed coefficients. They are accurate only near the origin and do not wrap
  // longitudes.

  /// The degrees of the point (x, y).
  static void toGPS(double lon0, double lat0, double x, double y, double& lon, double& lat);
  /// The metres from the origin to a point in degrees.
  static void toRelative(double lon0, double lat0, double lon, double lat, double& x, double& y);

  // With the radii of the WGS 84 ellipsoid at one latitude.

  /// Radius of curvature of the meridian, metres.
  static double calculateMr_(double latitude);
  /// Radius of the parallel, metres.
  static double calculatePr_(double latitude);
  /// Sets the two radii for every later abs2Rel() and rel2Abs() of the process. Before the first
  /// call abs2Rel() gives 0, and rel2Abs() infinity or NaN.
  static void initRadius(double latitude);
  /// The metres from the origin to a point in degrees, the short way round: a difference of 180
  /// degrees of longitude or more is wrapped once.
  static void abs2Rel(double lon0, double lat0, double lon, double lat, double& x, double& y);
  /// The degrees of the point (x, y). A longitude of exactly 180 becomes -180, and one of exactly
  /// -180 becomes 180; kept for existing programs.
  static void rel2Abs(double lon0, double lat0, double x, double y, double& lon, double& lat);

  /// Reads a JPEG's size in pixels from its header; false if there is none. Two oddities are kept
  /// for existing programs: four bytes are written to each output, and each successful call leaks a
  /// decompressor handle.
  /// \param width, height  each must point to 4 writable bytes: an unsigned short is too small
  static bool getJPEGResolution(const char* data, unsigned int size, unsigned short* width,
                                unsigned short* height);
};

#endif

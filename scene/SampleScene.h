#ifndef VELMAR_SCENE_SAMPLE_SCENE_H
#define VELMAR_SCENE_SAMPLE_SCENE_H

#include <turbojpeg.h>

#include <memory>
#include <string>
#include <type_traits>

#include "scene/Canvas.h"

/// Draws what a camera behind a windscreen sees on a country road: sky and hills, lane markings,
/// trees, posts and traffic that move with the frame number, and that number itself.
///
/// The same arguments give the same bytes. Use it from one thread at a time.
class SampleScene {
 public:
  /// \param width, height  pixels, 1 to 65500
  /// \param quality        of the JPEG, 1 to 100
  /// Throws std::invalid_argument for other values.
  SampleScene(unsigned int width, unsigned int height, int quality = 85);

  /// The frame as a JPEG with 4:2:0 chroma. At 1280 x 800 and quality 85 it has 100 to 200 kB.
  /// Throws std::runtime_error if it cannot be compressed.
  std::string jpeg(unsigned int frameNumber);

  /// Where the camera is at a frame, and how it moves.
  struct Motion {
    double east = 0, north = 0;  ///< metres from where frame 0 is
    double travelled = 0;        ///< metres
    double heading = 0.8;        ///< radians clockwise from north
    double curvature = 0;        ///< of the road, 1/metre, to the right
  };
  /// At frame 0.
  static Motion start();
  /// At the frame after that of `motion`.
  static Motion next(Motion motion);
  /// Metres from one frame to the next.
  static double metresPerFrame();

 private:
  /// A place on the picture, and how many pixels a metre takes there.
  struct Spot {
    double x, y, scale;
  };

  void drawSky(Canvas& canvas) const;
  Color skyColor(int x, int y) const;
  void drawGround();
  void drawRoadside();
  void drawTree(int number, double distance);
  void drawPosts(double distance);
  void drawSign(double distance);
  void drawTraffic(unsigned int frameNumber);
  void drawCar(double side, double distance, Color paint, Color lights);

  double bend(double distance) const;
  Spot spot(double side, double distance) const;
  std::string compress() const;

  struct Destroy {
    void operator()(void* handle) const { tjDestroy(handle); }
  };

  int quality_;
  double focalLength_;
  double horizon_;
  Canvas sky_;     // the same for all frames
  Canvas canvas_;  // the frame being drawn
  double travelled_ = 0;
  double curvature_ = 0;
  std::unique_ptr<std::remove_pointer_t<tjhandle>, Destroy> compressor_;
};

#endif

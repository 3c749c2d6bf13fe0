// marlo::FormatDecoderSubsystem: the host's media decoder component, which the host may offer to a
// service object. The renderer services of this product decode nothing themselves and refuse it.
#ifndef MARLO_FORMAT_DECODER_SUBSYSTEM_H_
#define MARLO_FORMAT_DECODER_SUBSYSTEM_H_

namespace marlo {

class FormatDecoderSubsystem {
 public:
  virtual ~FormatDecoderSubsystem() = default;
};

}  // namespace marlo

#endif  // MARLO_FORMAT_DECODER_SUBSYSTEM_H_

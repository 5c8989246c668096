#ifndef KALMO_FRAMEWORK_TV_UNKNOWN_H
#define KALMO_FRAMEWORK_TV_UNKNOWN_H

namespace kalmo {

/// Base of the reference-counted objects of the framework.
///
/// A new object has one reference, which belongs to whoever made it. Such an object may also live on the
/// stack or as a member as long as nobody adds references to it. Not safe across threads.
class CTVUnknown {
  public:
    /// Adds a reference; returns how many there are now.
    unsigned dwAddRef() noexcept { return ++m_dwRef; }
    /// Gives one reference back and deletes the object with the last one; returns how many are left.
    unsigned dwRelease() noexcept {
        const unsigned dwLeft = --m_dwRef;
        if (dwLeft == 0) {
            delete this;
        }
        return dwLeft;
    }

  protected:
    CTVUnknown() = default;
    /// A copy is an object of its own, with one reference.
    CTVUnknown(const CTVUnknown& /*rclOther*/) noexcept {}
    CTVUnknown& operator=(const CTVUnknown& /*rclOther*/) noexcept { return *this; }
    virtual ~CTVUnknown() = default;

  private:
    unsigned m_dwRef = 1;
};

}  // namespace kalmo

#endif

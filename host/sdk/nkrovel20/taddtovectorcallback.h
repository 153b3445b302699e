// The functor with which a plugin gathers the results of a host enumeration.
#pragma once

#include <boost/shared_ptr.hpp>
#include <functional>
#include <utility>
#include <vector>

namespace NKROVEL20 {

// std::unary_function is deprecated but part of the contract: existing plugins use its member types.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

/// Appends every object it is given to a vector, which the caller owns and keeps alive, and never stops the
/// enumeration. Wrap it in a boost::function to pass it to one.
template <typename T>
class TAddToVectorCallback : public std::unary_function<boost::shared_ptr<T>, bool> {
 public:
  explicit TAddToVectorCallback(std::vector<boost::shared_ptr<T>>& objects) : objects_(objects) {}

  bool operator()(boost::shared_ptr<T> object) const {
    objects_.push_back(std::move(object));
    return true;
  }

 private:
  std::vector<boost::shared_ptr<T>>& objects_;
};

#pragma GCC diagnostic pop

}  // namespace NKROVEL20

#pragma once

#include "pipewire/graph_edits.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace sonvel::pipewire {

/// A node or link that the reconciler has requested of a FakeServer.
struct Piece {
  OwnObject::State state = OwnObject::State::asked;
  std::uint64_t serial = 0; ///< 0 until it exists
  bool isWanted = true;
  bool runsIOProc = false; ///< in a tap's node
};

/// Called when a piece, or the IOProc in it, is destroyed.
using PieceEnd = std::function<void(Piece&)>;

template <class Object> class FakeObject : public Object {
 public:
  FakeObject(std::shared_ptr<Piece> piece, const PieceEnd& unmake)
      : piece_(std::move(piece))
      , unmake_(unmake) {}

  ~FakeObject() override { unmake_(*piece_); }

  OwnObject::State state() const override { return piece_->state; }

  std::uint32_t cycles() const override { return ++cycles_; }

 protected:
  std::shared_ptr<Piece> piece_; // NOLINT(misc-non-private-member-variables-in-classes)

 private:
  const PieceEnd& unmake_;
  mutable std::uint32_t cycles_ = 0;
};

class FakeIOProc final : public OwnObject {
 public:
  FakeIOProc(std::shared_ptr<Piece> node, const PieceEnd& ended)
      : node_(std::move(node))
      , ended_(ended) {
    node_->runsIOProc = true;
  }

  ~FakeIOProc() override {
    node_->runsIOProc = false;
    ended_(*node_);
  }

  State state() const override { return node_->isWanted ? node_->state : State::lost; }

 private:
  std::shared_ptr<Piece> node_;
  const PieceEnd& ended_;
};

class FakeTapNode final : public FakeObject<OwnTapNode> {
 public:
  FakeTapNode(std::shared_ptr<Piece> piece, const PieceEnd& unmake, const PieceEnd& ioProcEnded,
              std::vector<std::string>& faults)
      : FakeObject(std::move(piece), unmake)
      , ioProcEnded_(ioProcEnded)
      , faults_(faults) {}

  std::unique_ptr<OwnObject> run(const IOProcBlock&) override {
    if (piece_->runsIOProc) faults_.emplace_back("two IOProcs in one tap");
    return std::make_unique<FakeIOProc>(piece_, ioProcEnded_);
  }

 private:
  const PieceEnd& ioProcEnded_;
  std::vector<std::string>& faults_;
};

} // namespace sonvel::pipewire

// Keeping the browser's owner alive while the browser works.
//
// The browser tells its host of selections synchronously, and a host may end
// the control inside its handler: close a picker as soon as the user picks,
// release the control, destroy the window it lives in. The road that fired
// the event is still on the stack then, with work to do after it. So every
// way into the browser from outside (a message to one of its windows) holds
// the owner, the object that the browser lives in, for its whole length:
// a last release inside an event takes effect when the outermost road has
// returned. What the host destroys outright, its windows, the roads check for
// themselves after each event.
#pragma once

namespace browser {

class LifetimeAnchor {
public:
    // One more hold on the owner; each is ended by exactly one Unhold, which
    // may be the owner's last reference and destroy it.
    virtual void Hold() = 0;
    virtual void Unhold() = 0;

protected:
    ~LifetimeAnchor() = default;
};

// A hold for one scope; a null anchor (a browser that no object owns) holds
// nothing. The anchor is read once: ending the hold may destroy the object
// that gave it, so nothing of that object is touched afterwards.
class LifetimeHold {
public:
    explicit LifetimeHold(LifetimeAnchor* anchor) : anchor_(anchor) {
        if (anchor_ != nullptr) anchor_->Hold();
    }
    ~LifetimeHold() {
        if (anchor_ != nullptr) anchor_->Unhold();
    }
    LifetimeHold(const LifetimeHold&) = delete;
    LifetimeHold& operator=(const LifetimeHold&) = delete;

private:
    LifetimeAnchor* anchor_;
};

}  // namespace browser

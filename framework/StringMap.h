// A map from text to text whose iteration order is that of the classic
// 17-bucket string map: a key's bucket is its hash modulo 17 (hash = hash * 33
// + c over the key's characters taken as signed bytes), a new key goes to the
// head of its bucket's chain, and a walk goes through buckets 0 to 16 and
// down each chain from its head. Results that list a map's contents depend on
// this order, so it is part of the contract, not an accident.
//
// The chains only give the order. Keys are found through an index of their
// own, so a lookup costs the same in a map of a million keys as in one of ten,
// however a file chose its keys to crowd one bucket.
//
// Keys and values are C texts: whatever follows an embedded NUL is dropped on
// the way in, as with the classic map, which took them as NUL-terminated
// pointers.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace framework {

class StringMap {
public:
    static constexpr uint32_t kBucketCount = 17;

    static uint32_t HashKey(const std::string& key);

    int GetCount() const { return count_; }
    bool IsEmpty() const { return count_ == 0; }

    // Replaces the value of an existing key in place, or adds the key at the
    // head of its bucket.
    void SetAt(const std::string& key, const std::string& value);
    bool Lookup(const std::string& key, std::string& value) const;
    bool RemoveKey(const std::string& key);
    void RemoveAll();

    // The value of `key` without a copy, or null; valid until the map changes.
    const std::string* ValueOf(const std::string& key) const;
    // Appends `text` to the value of an existing key and puts the key at the
    // head of its bucket: the pair as RemoveKey followed by SetAt(key, value +
    // text) would leave it, without copying the value. False when the key is
    // absent.
    bool ExtendValue(const std::string& key, const std::string& text);

    // Calls f(key, value) for each pair in iteration order.
    template <typename F>
    void ForEach(F&& f) const {
        for (uint32_t bucket = 0; bucket < kBucketCount; ++bucket)
            for (int node = heads_[bucket]; node >= 0; node = nodes_[static_cast<size_t>(node)].next)
                f(nodes_[static_cast<size_t>(node)].key, nodes_[static_cast<size_t>(node)].value);
    }

    // The pairs in iteration order.
    std::vector<std::pair<std::string, std::string>> Pairs() const;

private:
    struct Node {
        std::string key;
        std::string value;
        uint32_t bucket = 0;
        int next = -1;
        int previous = -1;
    };
    int Find(const std::string& key) const;
    void Unlink(int node);
    void LinkAtHead(int node);

    std::vector<Node> nodes_;
    std::vector<int> freeNodes_;
    std::unordered_map<std::string, int> index_;
    int heads_[kBucketCount] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    int count_ = 0;
};

}  // namespace framework

#include "framework/StringMap.h"

#include <cstring>

namespace framework {

namespace {
std::string AsCText(const std::string& text) {
    return std::string(text.c_str());
}
}  // namespace

uint32_t StringMap::HashKey(const std::string& key) {
    uint32_t hash = 0;
    for (const char* c = key.c_str(); *c != '\0'; ++c)
        hash = hash * 33u + static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(*c)));
    return hash;
}

int StringMap::Find(const std::string& key, uint32_t bucket) const {
    for (int node = heads_[bucket]; node >= 0; node = nodes_[static_cast<size_t>(node)].next)
        if (std::strcmp(nodes_[static_cast<size_t>(node)].key.c_str(), key.c_str()) == 0) return node;
    return -1;
}

void StringMap::SetAt(const std::string& key, const std::string& value) {
    const uint32_t bucket = HashKey(key) % kBucketCount;
    int node = Find(key, bucket);
    if (node < 0) {
        if (!freeNodes_.empty()) {
            node = freeNodes_.back();
            freeNodes_.pop_back();
        } else {
            node = static_cast<int>(nodes_.size());
            nodes_.emplace_back();
        }
        Node& fresh = nodes_[static_cast<size_t>(node)];
        fresh.key = AsCText(key);
        fresh.next = heads_[bucket];
        heads_[bucket] = node;
        ++count_;
    }
    nodes_[static_cast<size_t>(node)].value = AsCText(value);
}

bool StringMap::Lookup(const std::string& key, std::string& value) const {
    int node = Find(key, HashKey(key) % kBucketCount);
    if (node < 0) return false;
    value = nodes_[static_cast<size_t>(node)].value;
    return true;
}

bool StringMap::RemoveKey(const std::string& key) {
    const uint32_t bucket = HashKey(key) % kBucketCount;
    int* link = &heads_[bucket];
    while (*link >= 0) {
        Node& node = nodes_[static_cast<size_t>(*link)];
        if (std::strcmp(node.key.c_str(), key.c_str()) == 0) {
            int removed = *link;
            *link = node.next;
            node = Node{};
            freeNodes_.push_back(removed);
            --count_;
            return true;
        }
        link = &node.next;
    }
    return false;
}

void StringMap::RemoveAll() {
    nodes_.clear();
    freeNodes_.clear();
    for (int& head : heads_) head = -1;
    count_ = 0;
}

std::vector<std::pair<std::string, std::string>> StringMap::Pairs() const {
    std::vector<std::pair<std::string, std::string>> pairs;
    pairs.reserve(static_cast<size_t>(count_));
    ForEach([&](const std::string& key, const std::string& value) { pairs.emplace_back(key, value); });
    return pairs;
}

}  // namespace framework

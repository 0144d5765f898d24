#include "framework/StringMap.h"

#include <cstring>

namespace framework {

namespace {
std::string AsCText(const std::string& text) {
    return std::string(text.c_str());
}
bool IsCText(const std::string& text) {
    return std::memchr(text.data(), '\0', text.size()) == nullptr;
}
}  // namespace

uint32_t StringMap::HashKey(const std::string& key) {
    uint32_t hash = 0;
    for (const char* c = key.c_str(); *c != '\0'; ++c)
        hash = hash * 33u + static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(*c)));
    return hash;
}

int StringMap::Find(const std::string& key) const {
    const auto found = IsCText(key) ? index_.find(key) : index_.find(AsCText(key));
    return found == index_.end() ? -1 : found->second;
}

void StringMap::Unlink(int node) {
    Node& n = nodes_[static_cast<size_t>(node)];
    if (n.previous >= 0)
        nodes_[static_cast<size_t>(n.previous)].next = n.next;
    else
        heads_[n.bucket] = n.next;
    if (n.next >= 0) nodes_[static_cast<size_t>(n.next)].previous = n.previous;
    n.next = -1;
    n.previous = -1;
}

void StringMap::LinkAtHead(int node) {
    Node& n = nodes_[static_cast<size_t>(node)];
    n.previous = -1;
    n.next = heads_[n.bucket];
    if (n.next >= 0) nodes_[static_cast<size_t>(n.next)].previous = node;
    heads_[n.bucket] = node;
}

void StringMap::SetAt(const std::string& key, const std::string& value) {
    int node = Find(key);
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
        fresh.bucket = HashKey(fresh.key) % kBucketCount;
        LinkAtHead(node);
        index_.emplace(fresh.key, node);
        ++count_;
    }
    nodes_[static_cast<size_t>(node)].value = AsCText(value);
}

bool StringMap::Lookup(const std::string& key, std::string& value) const {
    const std::string* found = ValueOf(key);
    if (found == nullptr) return false;
    value = *found;
    return true;
}

const std::string* StringMap::ValueOf(const std::string& key) const {
    const int node = Find(key);
    return node < 0 ? nullptr : &nodes_[static_cast<size_t>(node)].value;
}

bool StringMap::ExtendValue(const std::string& key, const std::string& text) {
    const int node = Find(key);
    if (node < 0) return false;
    std::string& value = nodes_[static_cast<size_t>(node)].value;
    if (IsCText(text))
        value.append(text);
    else
        value.append(text.c_str());
    Unlink(node);
    LinkAtHead(node);
    return true;
}

bool StringMap::RemoveKey(const std::string& key) {
    const int node = Find(key);
    if (node < 0) return false;
    Unlink(node);
    index_.erase(nodes_[static_cast<size_t>(node)].key);
    nodes_[static_cast<size_t>(node)] = Node{};
    freeNodes_.push_back(node);
    --count_;
    return true;
}

void StringMap::RemoveAll() {
    nodes_.clear();
    freeNodes_.clear();
    index_.clear();
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

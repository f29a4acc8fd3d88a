// A second reading of a table's layout, straight from its trees and cells: recursive, cell by cell,
// and without any of the headings' own parts.

#ifndef TESTS_SUPPORT_LAYOUTMODEL_H
#define TESTS_SUPPORT_LAYOUTMODEL_H

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"

class LayoutModel {
 public:
  using Place = unsigned long long;
  using Dims = std::vector<int>;
  using Tree = OmVectorTree<OmDimensionNode>;
  using Payloads = std::vector<const OmDimensionNode*>;
  struct Leaf {
    Payloads path;  // root first
    int subscript;
  };

  explicit LayoutModel(OmPivotTable& table_) : table(table_), leaves(table_.NDimensions()) {
    for (unsigned long d = 0; d != leaves.size(); ++d) {
      const OmDimension& dimension = *table.Dimension(static_cast<int>(d));
      if (dimension.NumCategories() != 0) {
        Collect(leaves[d], {}, dimension.Root());
      }
    }
  }

  static Dims Reversed(const PuppetVector<short>& axis) {
    Dims dims(axis.begin(), axis.end());
    std::reverse(dims.begin(), dims.end());
    return dims;
  }

  Place Count(const Dims& dims) const {
    Place count = 1;
    for (const int d : dims) {
      count *= static_cast<Place>(table.Size(d));
    }
    return count;
  }

  std::vector<Place> AllPlaces(const Dims& dims) const {
    std::vector<Place> places(Count(dims));
    std::iota(places.begin(), places.end(), Place{0});
    return places;
  }

  // The leaves of a place, null where none stands.
  std::vector<const Leaf*> Leaves(const Dims& dims, Place place) const {
    std::vector<const Leaf*> result(dims.size());
    for (unsigned long k = dims.size(); k-- != 0;) {
      const auto& all = leaves[static_cast<unsigned long>(dims[k])];
      const auto size = static_cast<Place>(table.Size(dims[k]));
      const Place digit = k == 0 ? place : place % size;
      place = k == 0 ? 0 : place / size;
      result[k] = digit < all.size() ? &all[digit] : nullptr;
    }
    return result;
  }

  void Fill(const Dims& dims, Place place, std::vector<int>& subscripts) const {
    subscripts.resize(leaves.size(), 0);
    const auto stand = Leaves(dims, place);
    for (unsigned long k = 0; k != dims.size(); ++k) {
      if (stand[k] != nullptr) {
        subscripts[static_cast<unsigned long>(dims[k])] = stand[k]->subscript;
      }
    }
  }

  std::vector<Place> NonEmpty(const Dims& head, const Dims& others,
                              std::vector<int> current) const {
    const bool sparse = Sparse();
    std::set<Place> places;
    if (sparse) {
      for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
        AddSparse(head, cell.Index(), places);
      }
    } else {
      for (Place place = 0; place != Count(head); ++place) {
        Fill(head, place, current);
        if (Stands(head, place) && AnyCell(others, 0, current)) {
          places.insert(place);
        }
      }
    }
    return {places.begin(), places.end()};
  }

  bool Sparse() const {
    Place total = 1, stored = 0;
    for (const int size : table.SizeVector()) {
      total *= static_cast<Place>(size);
    }
    for (auto cell = table.FirstCell(); cell.Cell() != nullptr; ++cell) {
      ++stored;
    }
    return stored < (total + 50) / 100;
  }

  // The width of each dimension over the leaves of some places, or over all where there are none.
  std::vector<int> Widths(const Dims& dims, const std::vector<Place>& places, bool corner) const {
    std::vector<int> widths(dims.size(), 0);
    for (unsigned long k = 0; k != dims.size(); ++k) {
      const auto& all = leaves[static_cast<unsigned long>(dims[k])];
      for (const Leaf& leaf : all) {
        const auto shows = [&](Place place) { return Leaves(dims, place)[k] == &leaf; };
        if (places.empty() || std::any_of(places.begin(), places.end(), shows)) {
          widths[k] = std::max(widths[k], Levels(leaf));
        }
      }
      if (corner && widths[k] != 0 && !all.empty() && !all[0].path[0]->Hide()) {
        --widths[k];
      }
    }
    return widths;
  }

  Payloads Labels(const Dims& dims, Place place, const std::vector<int>& widths,
                  bool corner) const {
    Payloads row;
    const auto stand = Leaves(dims, place);
    for (unsigned long k = 0; k != dims.size(); ++k) {
      Payloads labels;
      for (const OmDimensionNode* node : stand[k] != nullptr ? stand[k]->path : Payloads()) {
        if (node->IsGroup() && node->HideLabels()) {
          break;
        }
        if (!node->Hide() && !(corner && node == stand[k]->path[0])) {
          labels.push_back(node);
        }
      }
      labels.resize(static_cast<unsigned long>(widths[k]), nullptr);
      row.insert(row.end(), labels.begin(), labels.end());
    }
    return row;
  }

  OmPivotTable& table;
  std::vector<std::vector<Leaf>> leaves;  // by dimension, in display order

 private:
  static void Collect(std::vector<Leaf>& out, Payloads path, Tree::ConstNode node) {
    path.push_back(&*node);
    if (!node->IsGroup()) {
      out.push_back({path, static_cast<int>(node->Subscript())});
      return;
    }
    for (auto child = node.Begin(); child != node.End(); ++child) {
      Collect(out, path, child);
    }
  }

  // Visible nodes above the label-hiding group nearest the root.
  static int Levels(const Leaf& leaf) {
    int levels = 0;
    for (const OmDimensionNode* node : leaf.path) {
      if (node->IsGroup() && node->HideLabels()) {
        break;
      }
      levels += node->Hide() ? 0 : 1;
    }
    return levels;
  }

  bool Stands(const Dims& dims, Place place) const {
    const auto stand = Leaves(dims, place);
    return std::find(stand.begin(), stand.end(), nullptr) == stand.end();
  }

  void AddSparse(const Dims& head, const std::vector<int>& index, std::set<Place>& places) const {
    Place place = 0;
    for (const int d : head) {
      const auto& all = leaves[static_cast<unsigned long>(d)];
      Place position = all.size();
      for (Place p = 0; p != all.size(); ++p) {
        position = all[p].subscript == index[static_cast<unsigned long>(d)] ? p : position;
      }
      if (position == all.size()) {
        return;
      }
      place = place * static_cast<Place>(table.Size(d)) + position;
    }
    if (Stands(head, place)) {
      places.insert(place);
    }
  }

  // Tries every subscript of `others` from number k on.
  bool AnyCell(const Dims& others, unsigned long k, std::vector<int>& probe) const {
    if (k == others.size()) {
      const bool addressed = std::all_of(probe.begin(), probe.end(), [](int s) { return s >= 0; });
      return addressed && table.Cell(probe) != nullptr;
    }
    for (int s = 0; s != table.Size(others[k]); ++s) {
      probe[static_cast<unsigned long>(others[k])] = s;
      if (AnyCell(others, k + 1, probe)) {
        return true;
      }
    }
    return false;
  }
};

#endif

#include "markers/xml/lossless/writer.h"

#include <algorithm>
#include <set>

#include "markers/xml/lossless/namespaces.h"
#include "markers/xml/lossless/references.h"

namespace ventrix::xml {
namespace {

enum class Form { Document, Standalone };

class Writer {
  public:
    Writer(DocumentStore& store, Form form) : store_(store), form_(form) {}

    /// Goes through the subtree in document order without a stack of its own: a document may be deeper than
    /// any stack.
    void WriteSubtree(NodeIndex top) {
        NodeIndex index = top;
        while (true) {
            Open(index);
            if (const NodeIndex child = store_.At(index).firstChild; child != 0) {
                index = child;
                continue;
            }
            Close(index);
            while (index != top && store_.At(index).next == 0) {
                index = store_.At(index).parent;
                Close(index);
            }
            if (index == top) {
                return;
            }
            index = store_.At(index).next;
        }
    }

    /// Puts source bytes out; neighbours in the source go out in one piece.
    void Source(std::uint32_t begin, std::uint32_t end) {
        if (begin != pendingEnd_) {
            Flush();
            pendingBegin_ = begin;
        }
        pendingEnd_ = end;
    }

    std::string Finish() {
        Flush();
        return std::move(out_);
    }

    void Reserve(std::size_t bytes) { out_.reserve(bytes); }

  private:
    void Flush() {
        if (pendingBegin_ != pendingEnd_) {
            out_.append(store_.Slice(pendingBegin_, pendingEnd_));
        }
        pendingBegin_ = pendingEnd_ = 0;
    }

    void Open(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        if (record.type == NODE_ELEMENT) {
            OpenElement(index);
        } else if ((record.flags & OwnText) != 0) {
            Flush();
            AppendEscapedText(out_, store_.TextAt(record.extra));
        } else if (form_ == Form::Standalone && record.type == NODE_ENTITY_REFERENCE) {
            Flush();
            out_ += ExpandEntity(store_.Slice(record.begin + 1, record.end - 1),
                                 store_.SourceOf(record.begin).dtd.get());
        } else {
            Source(record.begin, record.end);
        }
    }

    void OpenElement(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        const bool gainedContent = record.close == 0 && record.firstChild != 0;
        if (!MustRewrite(index)) {
            // An empty-element tag that got content loses its slash.
            Source(record.begin, gainedContent ? record.end - 2 : record.end);
            if (gainedContent) {
                Flush();
                out_ += '>';
            }
            return;
        }
        Flush();
        out_ += '<';
        out_ += store_.NameOf(index);
        WriteAttributes(index);
        out_ += record.close == 0 && record.firstChild == 0 ? "/>" : ">";
    }

    bool MustRewrite(NodeIndex index) {
        if (form_ == Form::Standalone) {
            store_.ReadAttributes(index);
            const SourceText& source = store_.SourceOf(store_.At(index).begin);
            return (source.dtd != nullptr && store_.At(index).extra != 0) ||
                   (store_.At(index).flags & AttributesChanged) != 0;
        }
        return (store_.At(index).flags & AttributesChanged) != 0;
    }

    void WriteAttributes(NodeIndex element) {
        for (NodeIndex index = store_.At(element).extra; index != 0; index = store_.At(index).next) {
            const NodeRecord& record = store_.At(index);
            if ((record.flags & FromDtd) != 0 && form_ == Form::Document) {
                continue;
            }
            out_ += ' ';
            if ((record.flags & OwnText) == 0 && form_ == Form::Document) {
                out_ += store_.Slice(record.begin, record.end);
                continue;
            }
            out_ += store_.NameOf(index);
            out_ += "=\"";
            AppendEscapedValue(out_, store_.ContentOf(index, buffer_));
            out_ += '"';
        }
    }

    void Close(NodeIndex index) {
        const NodeRecord& record = store_.At(index);
        if (record.type != NODE_ELEMENT) {
            return;
        }
        if (record.close != 0) {
            const SourceText& source = store_.SourceOf(record.close);
            const std::size_t end = source.text.find('>', record.close - source.base);
            Source(record.close, source.base + static_cast<std::uint32_t>(end + 1));
        } else if (record.firstChild != 0) {
            Flush();
            out_ += "</";
            out_ += store_.NameOf(index);
            out_ += '>';
        }
    }

    DocumentStore& store_;
    Form form_;
    std::string out_;
    std::string buffer_;
    std::uint32_t pendingBegin_ = 0, pendingEnd_ = 0;
};

}  // namespace

std::string WriteDocument(DocumentStore& store, const SourceText& source) {
    Writer writer(store, Form::Document);
    writer.Reserve(source.text.size() + source.text.size() / 2);
    const NodeIndex root = store.At(source.document).firstChild;
    const std::uint32_t prologEnd = store.At(source.root).begin;
    writer.Source(source.base, prologEnd);
    if (root != 0) {
        writer.WriteSubtree(root);
    }
    writer.Source(source.rootEnd, source.base + static_cast<std::uint32_t>(source.text.size()));
    return writer.Finish();
}

std::string WriteElement(DocumentStore& store, NodeIndex element) {
    Writer writer(store, Form::Standalone);
    writer.WriteSubtree(element);
    std::string xml = writer.Finish();
    const std::string declarations = MissingNamespaces(store, element);
    if (!declarations.empty()) {
        xml.insert(1 + store.NameOf(element).size(), declarations);
    }
    return xml;
}

}  // namespace ventrix::xml

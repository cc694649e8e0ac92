// The collection that v2Frames hands out.
#include <ocidl.h>
#include <vector>

#include <gtest/gtest.h>

#include "com/host.h"

namespace brindle::com::test {
namespace {

VARIANT omitted() {
    VARIANT value{};
    value.vt = VT_ERROR;
    value.scode = DISP_E_PARAMNOTFOUND;
    return value;
}

VARIANT position(long place) {
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = place;
    return value;
}

VARIANT key(const Text& text) {
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = text.get();
    return value;
}

class FramesTest : public testing::Test {
protected:
    FramesTest() {
        EXPECT_EQ(assign(*header.Get(), file.name()), S_OK);
        ComPtr<IDispatch> object;
        EXPECT_EQ(header->get_v2Frames(&object), S_OK);
        EXPECT_EQ(object->QueryInterface(host::kIKeyedCollectionId,
                                         reinterpret_cast<void**>(frames.GetAddressOf())),
                  S_OK);
    }

    // The text of an item, or its result code as a number.
    std::wstring item(VARIANT place, VARIANT name) {
        VARIANT found{};
        const HRESULT result = frames->Item(place, name, &found);
        if (result != S_OK) {
            return std::to_wstring(static_cast<unsigned long>(result) - 0x800A0000UL);
        }
        EXPECT_EQ(found.vt, VT_BSTR);
        return taken(found.bstrVal);
    }

    long count() {
        long count = -1;
        EXPECT_EQ(frames->get_Count(&count), S_OK);
        return count;
    }

    File file{L"frames.mp3", tag({{"TALB", "b"}, {"TIT2", "a"}, {"TPE1", "c"}}) + audio(120)};
    ComPtr<host::_cMPEGHeader> header = create();
    ComPtr<host::IKeyedCollection> frames;
};

TEST_F(FramesTest, ItemIsFoundByPositionAndByKey) {
    const Text title(L"TIT2");
    const Text missing(L"TXXX");
    const Text lower_case(L"tit2");
    EXPECT_EQ(item(position(1), omitted()), L"TALB");
    EXPECT_EQ(item(position(3), omitted()), L"TPE1");
    EXPECT_EQ(item(position(0), key(title)), L"TIT2");
    EXPECT_EQ(item(key(title), omitted()), L"TIT2");
    EXPECT_EQ(item(position(0), omitted()), L"9");
    EXPECT_EQ(item(position(4), omitted()), L"9");
    EXPECT_EQ(item(position(0), key(missing)), L"5");
    EXPECT_EQ(item(key(lower_case), omitted()), L"5");
    EXPECT_EQ(item(omitted(), omitted()), L"5");
    VARIANT null{};
    null.vt = VT_NULL;
    EXPECT_EQ(item(null, omitted()), L"13");
    VARIANT nowhere{};
    nowhere.vt = VT_BYREF | VT_I4;
    EXPECT_EQ(item(nowhere, omitted()), L"13");
    VARIANT real{};
    real.vt = VT_R8;
    real.dblVal = 2;
    EXPECT_EQ(item(real, omitted()), L"TIT2");
    VARIANT variable = position(2);
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &variable;
    EXPECT_EQ(item(reference, omitted()), L"TIT2");
}

TEST_F(FramesTest, EntriesAreAddedAndRemoved) {
    const Text name(L"MINE");
    EXPECT_EQ(count(), 3);
    EXPECT_EQ(frames->Add(position(70000), name.get()), S_OK);
    EXPECT_EQ(count(), 4);
    EXPECT_EQ(static_cast<unsigned long>(frames->Add(position(1), name.get())), 0x800A01C9UL);
    VARIANT found{};
    EXPECT_EQ(frames->Item(position(4), omitted(), &found), S_OK);
    EXPECT_EQ(found.vt, VT_I4);
    EXPECT_EQ(found.lVal, 70000);
    VARIANT_BOOL exists = VARIANT_FALSE;
    EXPECT_EQ(frames->Exists(name.get(), &exists), S_OK);
    EXPECT_EQ(exists, VARIANT_TRUE);
    EXPECT_EQ(frames->Remove(name.get()), S_OK);
    EXPECT_EQ(frames->Exists(name.get(), &exists), S_OK);
    EXPECT_EQ(exists, VARIANT_FALSE);
    EXPECT_EQ(static_cast<unsigned long>(frames->Remove(name.get())), 0x800A0005UL);
    EXPECT_EQ(frames->Reserved3(), E_NOTIMPL);
    EXPECT_EQ(frames->Reserved6(), E_NOTIMPL);
    EXPECT_EQ(frames->get_Count(nullptr), E_POINTER);
    EXPECT_EQ(frames->Item(position(1), omitted(), nullptr), E_POINTER);
    EXPECT_EQ(frames->Exists(name.get(), nullptr), E_POINTER);
    EXPECT_EQ(frames->get__NewEnum(nullptr), E_POINTER);
}

TEST_F(FramesTest, EnumeratorGoesThroughAllInOrder) {
    ComPtr<IUnknown> object;
    ASSERT_EQ(frames->get__NewEnum(&object), S_OK);
    ComPtr<IEnumVARIANT> enumerator;
    ASSERT_EQ(object.As(&enumerator), S_OK);
    std::vector<std::wstring> seen;
    VARIANT next{};
    while (enumerator->Next(1, &next, nullptr) == S_OK) {
        ASSERT_EQ(next.vt, VT_BSTR);
        seen.push_back(taken(next.bstrVal));
    }
    EXPECT_EQ(seen, (std::vector<std::wstring>{L"TALB", L"TIT2", L"TPE1"}));
    EXPECT_EQ(enumerator->Reset(), S_OK);
    EXPECT_EQ(enumerator->Skip(2), S_OK);
    VARIANT rest[2] = {};
    ULONG fetched = 0;
    EXPECT_EQ(enumerator->Next(2, rest, &fetched), S_FALSE);
    EXPECT_EQ(fetched, 1U);
    EXPECT_EQ(taken(rest[0].bstrVal), L"TPE1");
    EXPECT_EQ(enumerator->Next(2, rest, nullptr), E_POINTER);
}

TEST_F(FramesTest, CollectionOutlivesTheFileAndTheObject) {
    EXPECT_EQ(assign(*header.Get(), L"other.wav"), S_OK);
    EXPECT_EQ(count(), 3);
    header.Reset();
    EXPECT_EQ(count(), 3);
    EXPECT_EQ(item(position(1), omitted()), L"TALB");
}

TEST_F(FramesTest, DefaultMemberAndIndexedPropertyServeScripts) {
    VARIANTARG place = position(2);
    DISPPARAMS arguments{&place, nullptr, 1, 0};
    VARIANT found{};
    EXPECT_EQ(frames->Invoke(DISPID_VALUE, GUID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                             &arguments, &found, nullptr, nullptr),
              S_OK);
    ASSERT_EQ(found.vt, VT_BSTR);
    EXPECT_EQ(taken(found.bstrVal), L"TIT2");
    // header.v2Frames(2)
    EXPECT_EQ(header->Invoke(52, GUID_NULL, 0, DISPATCH_METHOD | DISPATCH_PROPERTYGET, &arguments,
                             &found, nullptr, nullptr),
              S_OK);
    ASSERT_EQ(found.vt, VT_BSTR);
    EXPECT_EQ(taken(found.bstrVal), L"TIT2");
    const auto empty = create();
    EXPECT_EQ(
        empty->Invoke(52, GUID_NULL, 0, DISPATCH_PROPERTYGET, &arguments, &found, nullptr, nullptr),
        DISP_E_TYPEMISMATCH);
}

}  // namespace
}  // namespace brindle::com::test

#include "automation/ComError.h"

#include "automation/Convert.h"
#include "zebreader81/AutomationError.h"

#include <new>
#include <stdexcept>

namespace zebreader81::automation {

HRESULT raiseError(REFIID iid, int32_t number, const std::string& description) noexcept
{
    ICreateErrorInfo* create = nullptr;
    if (SUCCEEDED(CreateErrorInfo(&create))) {
        create->SetGUID(iid);
        create->SetSource(const_cast<LPOLESTR>(L"ZEBReader81"));
        const std::wstring text = widen(description);
        create->SetDescription(const_cast<LPOLESTR>(text.c_str()));
        IErrorInfo* info = nullptr;
        if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)))) {
            SetErrorInfo(0, info);
            info->Release();
        }
        create->Release();
    }
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, static_cast<WORD>(number));
}

HRESULT currentExceptionToHresult(REFIID iid) noexcept
{
    try {
        throw;
    } catch (const AutomationError& e) {
        return raiseError(iid, e.number(), e.what());
    } catch (const std::bad_alloc&) {
        raiseError(iid, 7, "Out of memory");
        return E_OUTOFMEMORY;
    } catch (const std::out_of_range&) {
        return raiseError(iid, 9, "Subscript out of range");
    } catch (const std::exception& e) {
        return raiseError(iid, 5, e.what());
    } catch (...) {
        raiseError(iid, 51, "Internal error");
        return E_UNEXPECTED;
    }
}

} // namespace zebreader81::automation

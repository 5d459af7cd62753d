-- What three of the functions answer. An answer is at most 5,000 rows long, which is 160 applications on each of
-- thirty days, so that nobody can make an account's answers long by writing into it. Newest days and most
-- pressed applications come first: a limit, this one or PostgREST's `max-rows`, cuts off what matters least.

CREATE OR REPLACE FUNCTION public.get_account_app_hourly_totals(p_email text, p_day date)
    RETURNS TABLE (hour integer, bundle_id text, app_name text, total_count bigint)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET enable_nestloop = off
    ROWS 100
AS $$
BEGIN
    RETURN QUERY
        SELECT t.hour::integer, t.bundle_id, coalesce(nullif(r.app_name, ''), t.bundle_id), t.total_count
        FROM (
            SELECT c.hour, c.bundle_id, sum(c.count)::bigint AS total_count
            FROM public.device_app_hour_counts AS c
            WHERE c.customer_email = p_email AND c.day = p_day
            GROUP BY c.bundle_id, c.hour
            ORDER BY total_count DESC, c.hour, c.bundle_id
            LIMIT 5000
        ) AS t
        LEFT JOIN public.device_app_registry AS r
            ON r.customer_email = p_email AND r.bundle_id = t.bundle_id
        ORDER BY t.total_count DESC, t.hour, t.bundle_id;
END
$$;

CREATE OR REPLACE FUNCTION public.get_account_app_daily_totals(p_email text, p_days integer, p_end_day date)
    RETURNS TABLE (day date, bundle_id text, app_name text, total_count bigint)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    SET enable_nestloop = off
    ROWS 300
AS $$
BEGIN
    RETURN QUERY
        SELECT t.day, t.bundle_id, coalesce(nullif(r.app_name, ''), t.bundle_id), t.total_count
        FROM (
            SELECT c.day, c.bundle_id, sum(c.count)::bigint AS total_count
            FROM public.device_app_hour_counts AS c
            WHERE c.customer_email = p_email
                AND c.day > p_end_day - least(greatest(p_days, 0), 366)
                AND c.day <= p_end_day
            GROUP BY c.day, c.bundle_id
            ORDER BY c.day DESC, total_count DESC, c.bundle_id
            LIMIT 5000
        ) AS t
        LEFT JOIN public.device_app_registry AS r
            ON r.customer_email = p_email AND r.bundle_id = t.bundle_id
        ORDER BY t.day DESC, t.total_count DESC, t.bundle_id;
END
$$;

-- A device's identifier is the secret with which it writes: whoever learned it could overwrite its counts. What
-- is listed is the SHA-256 of the address, a line break and the identifier, in hexadecimal digits. It names the
-- device as lastingly, the device itself can work it out, and an identifier, 122 random bits, cannot be guessed
-- from it. With the address in it, it does not tell that a device belongs to two accounts.
CREATE FUNCTION fernhollow.listed_device(email text, device_id text) RETURNS text
    LANGUAGE sql
    IMMUTABLE
AS $$
    SELECT encode(sha256(convert_to(email || E'\n' || device_id, 'UTF8')), 'hex')
$$;
REVOKE ALL ON FUNCTION fernhollow.listed_device(text, text) FROM PUBLIC;
GRANT EXECUTE ON FUNCTION fernhollow.listed_device(text, text) TO fernhollow_reader;

CREATE OR REPLACE FUNCTION public.get_account_devices(p_email text)
    RETURNS TABLE (device_id text, device_name text, last_seen_at text)
    LANGUAGE plpgsql
    STABLE SECURITY DEFINER
    SET search_path = pg_catalog, pg_temp
    ROWS 4
AS $$
BEGIN
    RETURN QUERY
        SELECT fernhollow.listed_device(d.customer_email, d.device_id), d.device_name,
            to_char(d.last_seen_at AT TIME ZONE 'UTC', 'YYYY-MM-DD"T"HH24:MI:SS"Z"')
        FROM public.devices AS d
        WHERE d.customer_email = p_email
        ORDER BY d.last_seen_at DESC, d.device_name, d.device_id;
END
$$;
